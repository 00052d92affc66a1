// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

class QCameraControl;

/*!
 * Records what a camera control tells. The lists fill on the recorder's thread, wherever a signal
 * comes from; the call log gets every signal as "control" on the thread that emits it.
 */
class CaptureRecorder : public QObject
{
    Q_OBJECT
public:
    explicit CaptureRecorder(QCameraControl *control);

    void clear();

    QList<int> states;
    QList<int> statuses;
    QStringList errors; // "code text"
};
