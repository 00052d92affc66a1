// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "commandline.h"
#include "previewreport.h"
#include "previewsurface.h"
#include "previewwindow.h"

#include <QCamera>
#include <QCameraInfo>
#include <QObject>
#include <QTimer>

#include <memory>

namespace Tool {

/*!
 * Shows a camera's pictures in a window, or takes them without one, and tells what they came to.
 *
 * Threads: the application thread.
 * Errors:  explained on standard error; the exit code tells wrong usage from failure.
 */
class PreviewCommand : public QObject
{
    Q_OBJECT
public:
    explicit PreviewCommand(const PreviewOptions &options, QObject *parent = nullptr);
    ~PreviewCommand() override;

    /*! Runs until it has all its pictures, is interrupted or fails; returns the exit code. */
    int run();

private:
    void openCamera(const QCameraInfo &camera);
    void onStatusChanged(QCamera::Status status);
    void onError(QCamera::Error error);
    void startCamera();
    void openWindow();
    void onTick();
    void finish(int exitCode, const QString &error = QString());
    void closeCamera();
    bool saveSnapshot();
    bool printReport();
    QString gone() const; // what to say where the camera is no longer listed

    const PreviewOptions m_options;
    PreviewSurface m_surface; // before the camera, which lets go of it
    std::unique_ptr<PreviewWindow> m_window;
    std::unique_ptr<QCamera> m_camera;
    PreviewReport m_report;
    QTimer m_tick;
    int m_ticks = 0;
    qint64 m_presentedAtTick = 0;
    int m_idleTicks = 0;
    bool m_started = false;
    bool m_finished = false;
};

} // namespace Tool
