// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "commandline.h"
#include "fileplayer.h"
#include "previewsurface.h"
#include "previewwindow.h"

#include <memory>

namespace Tool {

/*!
 * Plays a video file in a window, or without one, and tells what that came to.
 *
 * Threads: the application thread.
 * Errors:  explained on standard error; the exit code tells wrong usage from failure.
 */
class PlayCommand : public QObject
{
    Q_OBJECT
public:
    explicit PlayCommand(const PlayOptions &options, QObject *parent = nullptr);
    ~PlayCommand() override;

    /*! Runs until all is shown, it is interrupted or fails; returns the exit code. */
    int run();

private:
    void openWindow();
    void onTick();
    void fail(const QString &error);
    bool saveSnapshot();
    bool printReport();
    int exitCode() const;

    const PlayOptions m_options;
    PreviewSurface m_surface; // before the player, which lets go of it
    std::unique_ptr<PreviewWindow> m_window;
    FilePlayer m_player { &m_surface };
    QTimer m_tick;
    int m_ticks = 0;
    bool m_isInterrupted = false; // or has as many pictures as were asked for
    bool m_hasFailed = false;
    QString m_snapshot; // once it is saved
};

} // namespace Tool
