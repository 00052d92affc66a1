#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

#include <palaver/qpvencodedvideoframe.h>

class QPVEncodeControl;

/*!
 * Records what an encode control tells. The lists fill on the recorder's thread, wherever a signal
 * comes from; the call log gets every signal as "control" on the thread that emits it.
 */
class EncodeRecorder : public QObject
{
    Q_OBJECT
public:
    explicit EncodeRecorder(QPVEncodeControl *control);

    void clear();

    QList<int> statuses;
    QStringList errors; // "code text"
    QList<QPVEncodedVideoFrame> frames;
    int endsOfStream = 0;
};
