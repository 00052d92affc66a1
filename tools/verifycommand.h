// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "commandline.h"
#include "fileplayer.h"
#include "patterncheck.h"
#include "recordsurface.h"

namespace Tool {

/*!
 * Decodes a recording of the test pattern and judges the numbers in its pictures.
 *
 * Threads: the application thread.
 * Errors:  explained on standard error; the exit code is Failure where anything is not as it was
 *          recorded.
 */
class VerifyCommand : public QObject
{
    Q_OBJECT
public:
    explicit VerifyCommand(const VerifyOptions &options, QObject *parent = nullptr);

    /*! Runs until all is seen, it is interrupted or fails; returns the exit code. */
    int run();

private:
    void onPicture(const QVideoFrame &frame);
    void onTick();
    void fail(const QString &error);
    int report();

    const VerifyOptions m_options;
    RecordSurface m_surface; // before the player, which lets go of it
    FilePlayer m_player { &m_surface };
    PatternCheck m_check;
    QTimer m_tick;
    int m_ticks = 0;
    bool m_hasFailed = false;
};

} // namespace Tool
