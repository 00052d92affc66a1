// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaServiceProviderPlugin>

/*! A foreign plugin whose camera never answers, as those of a device that is in use may not. */
class OtherCamera : public QMediaServiceProviderPlugin,
                    public QMediaServiceSupportedDevicesInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.qt.mediaserviceproviderfactory/5.0" FILE
                          "othercamera.json")
    Q_INTERFACES(QMediaServiceSupportedDevicesInterface)
public:
    QMediaService *create(const QString &key) override;
    void release(QMediaService *service) override;
    QList<QByteArray> devices(const QByteArray &service) const override;
    QString deviceDescription(const QByteArray &service, const QByteArray &device) override;
};
