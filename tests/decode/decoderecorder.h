// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

class QPVDecodeControl;

/*!
 * Records what a decode control tells. The public lists fill on the recorder's thread, wherever a
 * signal comes from; the call log gets every signal as "control" on the thread that emits it.
 */
class DecodeRecorder : public QObject
{
    Q_OBJECT
public:
    explicit DecodeRecorder(QPVDecodeControl *control);

    QList<int> statuses;
    QStringList errors; // "code text"
};
