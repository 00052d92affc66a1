// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellebackendloader.h"

#include <QMediaServiceProviderPlugin>

#include <atomic>

/*!
 * The camera service under Qt's own key: the back end's camera service, called by the name that
 * applications know. Forwards every question and request with the key translated; other keys get
 * neutral answers.
 *
 * Threads: any thread for questions; create() and release() on the thread of the application's
 *          camera object.
 * Owner:   Qt's plugin loader. Services that create() hands out are the back end's and go back to
 *          it through release().
 * Errors:  without a back end there are no devices and no services; the loader logs why, once.
 */
class OcelleBridge : public QMediaServiceProviderPlugin,
                     public QMediaServiceSupportedDevicesInterface,
                     public QMediaServiceDefaultDeviceInterface,
                     public QMediaServiceFeaturesInterface,
                     public QMediaServiceCameraInfoInterface
{
    Q_OBJECT
    Q_INTERFACES(QMediaServiceSupportedDevicesInterface)
    Q_INTERFACES(QMediaServiceDefaultDeviceInterface)
    Q_INTERFACES(QMediaServiceFeaturesInterface)
    Q_INTERFACES(QMediaServiceCameraInfoInterface)
    Q_PLUGIN_METADATA(IID QMediaServiceProviderFactoryInterface_iid FILE "ocelle-bridge.json")
public:
    OcelleBridge() = default;
    ~OcelleBridge() override;

    QMediaService *create(const QString &key) override;
    void release(QMediaService *service) override;

    QList<QByteArray> devices(const QByteArray &service) const override;
    QString deviceDescription(const QByteArray &service, const QByteArray &device) override;
    QByteArray defaultDevice(const QByteArray &service) const override;
    QMediaServiceProviderHint::Features supportedFeatures(const QByteArray &service) const override;
    QCamera::Position cameraPosition(const QByteArray &device) const override;
    int cameraOrientation(const QByteArray &device) const override;

private:
    template <typename Interface>
    Interface *backendInterface() const;

    mutable OcelleBackendLoader m_loader;
    std::atomic<int> m_services { 0 }; // handed out and not yet released
};
