// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCameraControl>

class OcelleCaptureSession;

/*!
 * Qt's camera control over the capture session, for video only.
 *
 * Threads: application thread; error() may be emitted on any thread.
 * Owner:   OcelleCaptureSession, which emits the state and status signals.
 */
class OcelleCaptureControl : public QCameraControl
{
    Q_OBJECT
public:
    explicit OcelleCaptureControl(OcelleCaptureSession *session);

    QCamera::State state() const override; // as requested
    void setState(QCamera::State state) override;
    QCamera::Status status() const override;

    QCamera::CaptureModes captureMode() const override;
    void setCaptureMode(QCamera::CaptureModes mode) override; // ignored
    bool isCaptureModeSupported(QCamera::CaptureModes mode) const override;

    bool canChangeProperty(PropertyChangeType type, QCamera::Status status) const override;

private:
    OcelleCaptureSession *const m_session; // not owned, outlives the control
};
