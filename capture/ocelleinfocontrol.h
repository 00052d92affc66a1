// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCameraInfoControl>

class OcelleProvider;

/*!
 * Tells which way a camera looks and how it is mounted.
 *
 * Threads: application thread.
 * Owner:   OcelleCaptureService.
 * Units:   degrees.
 */
class OcelleInfoControl : public QCameraInfoControl
{
    Q_OBJECT
public:
    explicit OcelleInfoControl(OcelleProvider *provider);

    QCamera::Position cameraPosition(const QString &deviceName) const override;
    int cameraOrientation(const QString &deviceName) const override;

private:
    OcelleProvider *const m_provider; // not owned
};
