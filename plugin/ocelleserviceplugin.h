// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocelleprovider.h"

/*!
 * What Qt's plugin loader finds: forwards every question to the one provider.
 *
 * Threads: as OcelleProvider.
 * Owner:   the plugin loader. Services go before it.
 */
class OcelleServicePlugin : public QMediaServiceProviderPlugin,
                            public QMediaServiceSupportedDevicesInterface,
                            public QMediaServiceDefaultDeviceInterface,
                            public QMediaServiceFeaturesInterface,
                            public QMediaServiceCameraInfoInterface,
                            public QPVMediaServiceCodecInfoInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.qt.mediaserviceproviderfactory/5.0" FILE "ocelle.json")
    Q_INTERFACES(QMediaServiceSupportedDevicesInterface)
    Q_INTERFACES(QMediaServiceDefaultDeviceInterface)
    Q_INTERFACES(QMediaServiceFeaturesInterface)
    Q_INTERFACES(QMediaServiceCameraInfoInterface)
    Q_INTERFACES(QPVMediaServiceCodecInfoInterface)
public:
    QMediaService *create(const QString &key) override;
    void release(QMediaService *service) override;
    QMediaServiceProviderHint::Features supportedFeatures(const QByteArray &service) const override;
    QByteArray defaultDevice(const QByteArray &service) const override;
    QList<QByteArray> devices(const QByteArray &service) const override;
    QString deviceDescription(const QByteArray &service, const QByteArray &device) override;
    QCamera::Position cameraPosition(const QByteArray &device) const override;
    int cameraOrientation(const QByteArray &device) const override;
    QString codecType(const QByteArray &codec) const override;
    bool codecIsEncoder(const QByteArray &codec) const override;
    bool codecIsHardwareAccelerated(const QByteArray &codec) const override;
    int codecMaxInstances(const QByteArray &codec) const override;

private:
    OcelleProvider m_provider;
};
