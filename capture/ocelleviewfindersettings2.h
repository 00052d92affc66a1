// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCameraViewfinderSettingsControl2>

class OcelleCaptureSession;

/*!
 * Lists what the camera can deliver and takes what the application wants of it.
 *
 * Threads: application thread.
 * Owner:   OcelleCaptureService; the session is its Qt parent.
 */
class OcelleViewfinderSettings2 : public QCameraViewfinderSettingsControl2
{
public:
    explicit OcelleViewfinderSettings2(OcelleCaptureSession *session);

    QList<QCameraViewfinderSettings> supportedViewfinderSettings() const override;
    QCameraViewfinderSettings viewfinderSettings() const override;
    void setViewfinderSettings(const QCameraViewfinderSettings &settings) override;

private:
    OcelleCaptureSession *const m_session; // not owned
};
