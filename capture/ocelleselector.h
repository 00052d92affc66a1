// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QByteArray>
#include <QVideoDeviceSelectorControl>

class OcelleProvider;

/*!
 * Presents the cameras as indexed devices, remembers the selected one by its id and falls back to
 * the default camera when it is gone.
 *
 * Threads: application thread; the provider's changes from elsewhere arrive queued.
 * Owner:   OcelleCaptureService.
 * Errors:  an index that is not in the list, -1 for one, has a null name and description.
 */
class OcelleSelector : public QVideoDeviceSelectorControl
{
    Q_OBJECT
public:
    OcelleSelector(OcelleProvider *provider, QObject *parent);

    int deviceCount() const override;
    QString deviceName(int index) const override; // the id
    QString deviceDescription(int index) const override;
    int defaultDevice() const override;
    int selectedDevice() const override; // -1 when the selected camera is gone

    QByteArray getCameraIdByIndex(int index) const;     // null where there is none
    int getCameraIndexById(const QByteArray &id) const; // -1 where there is none

    void updateDefaultCamera();
    void updateCameraList();

public slots:
    void setSelectedDevice(int index) override;
    void onDevicesChanged(const QByteArray &service);

private:
    OcelleProvider *const m_provider; // not owned
    QByteArray m_selectedId;
};
