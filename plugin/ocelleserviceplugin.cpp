// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleserviceplugin.h"

QMediaService *OcelleServicePlugin::create(const QString &key)
{
    return m_provider.create(key);
}

void OcelleServicePlugin::release(QMediaService *service)
{
    m_provider.release(service);
}

QMediaServiceProviderHint::Features
OcelleServicePlugin::supportedFeatures(const QByteArray &service) const
{
    return m_provider.supportedFeatures(service);
}

QByteArray OcelleServicePlugin::defaultDevice(const QByteArray &service) const
{
    return m_provider.defaultDevice(service);
}

QList<QByteArray> OcelleServicePlugin::devices(const QByteArray &service) const
{
    return m_provider.devices(service);
}

QString OcelleServicePlugin::deviceDescription(const QByteArray &service, const QByteArray &device)
{
    return m_provider.deviceDescription(service, device);
}

QCamera::Position OcelleServicePlugin::cameraPosition(const QByteArray &device) const
{
    return m_provider.cameraPosition(device);
}

int OcelleServicePlugin::cameraOrientation(const QByteArray &device) const
{
    return m_provider.cameraOrientation(device);
}

QString OcelleServicePlugin::codecType(const QByteArray &codec) const
{
    return m_provider.codecType(codec);
}

bool OcelleServicePlugin::codecIsEncoder(const QByteArray &codec) const
{
    return m_provider.codecIsEncoder(codec);
}

bool OcelleServicePlugin::codecIsHardwareAccelerated(const QByteArray &codec) const
{
    return m_provider.codecIsHardwareAccelerated(codec);
}

int OcelleServicePlugin::codecMaxInstances(const QByteArray &codec) const
{
    return m_provider.codecMaxInstances(codec);
}
