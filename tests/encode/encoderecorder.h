// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QList>
#include <QMutex>
#include <QObject>
#include <QStringList>

#include <palaver/qpvencodedvideoframe.h>

class QPVEncodeControl;

/*!
 * Records what an encode control tells. The public lists fill on the recorder's thread, wherever a
 * signal comes from; the call log gets every signal as "control" on the thread that emits it.
 */
class EncodeRecorder : public QObject
{
    Q_OBJECT
public:
    explicit EncodeRecorder(QPVEncodeControl *control);

    QList<int> statuses;
    QStringList errors; // "code text"
    int endsOfStream = 0;

    /*! Every frame that the control has told of up to now, on whatever thread. */
    QList<QPVEncodedVideoFrame> frames() const;

private:
    mutable QMutex m_mutex; // guards m_frames
    QList<QPVEncodedVideoFrame> m_frames;
};
