// SPDX-License-Identifier: BSD-3-Clause
#include "ocellebridge.h"

#include <QCameraControl>
#include <QMediaService>

namespace {

const char QtCameraKey[] = "org.qt-project.qt.camera";
const char BackendCameraKey[] = "veltra.palaver.camera";

/*!
 * Has \a service say nothing more through its camera control. A service is given back while its
 * QCamera is being destroyed, when parts of what listens to that are gone already: QML's Camera has
 * deleted its exposure and focus objects by then, which Qt does not disconnect.
 */
void silence(QMediaService *service)
{
    if (QMediaControl *const control = service->requestControl(QCameraControl_iid)) {
        control->blockSignals(true);
        service->releaseControl(control);
    }
}

} // namespace

OcelleBridge::~OcelleBridge()
{
    // A service that was never released (an application leaving with a camera open) still uses the
    // back end, which then stays as it is until the process ends.
    if (m_services.load() == 0)
        m_loader.unload();
}

/*! The back end as \a Interface; null without a back end or where it does not offer that. */
template <typename Interface>
Interface *OcelleBridge::backendInterface() const
{
    return qobject_cast<Interface *>(m_loader.backend());
}

QMediaService *OcelleBridge::create(const QString &key)
{
    if (key != QLatin1String(QtCameraKey))
        return nullptr;
    QMediaServiceProviderPlugin *const backend = m_loader.backend();
    if (!backend)
        return nullptr;
    QMediaService *const service = backend->create(QLatin1String(BackendCameraKey));
    if (service)
        ++m_services;
    return service;
}

void OcelleBridge::release(QMediaService *service)
{
    QMediaServiceProviderPlugin *const backend = m_loader.backend();
    if (!service || !backend)
        return; // without a back end no service was ever handed out
    silence(service);
    backend->release(service);
    --m_services;
}

QList<QByteArray> OcelleBridge::devices(const QByteArray &service) const
{
    if (service != QtCameraKey)
        return {};
    const auto *const backend = backendInterface<QMediaServiceSupportedDevicesInterface>();
    return backend ? backend->devices(BackendCameraKey) : QList<QByteArray>();
}

QString OcelleBridge::deviceDescription(const QByteArray &service, const QByteArray &device)
{
    if (service != QtCameraKey)
        return QString();
    auto *const backend = backendInterface<QMediaServiceSupportedDevicesInterface>();
    return backend ? backend->deviceDescription(BackendCameraKey, device) : QString();
}

QByteArray OcelleBridge::defaultDevice(const QByteArray &service) const
{
    if (service != QtCameraKey)
        return QByteArray();
    const auto *const backend = backendInterface<QMediaServiceDefaultDeviceInterface>();
    return backend ? backend->defaultDevice(BackendCameraKey) : QByteArray();
}

QMediaServiceProviderHint::Features OcelleBridge::supportedFeatures(const QByteArray &service) const
{
    if (service != QtCameraKey)
        return {};
    const auto *const backend = backendInterface<QMediaServiceFeaturesInterface>();
    return backend ? backend->supportedFeatures(BackendCameraKey)
                   : QMediaServiceProviderHint::Features();
}

QCamera::Position OcelleBridge::cameraPosition(const QByteArray &device) const
{
    const auto *const backend = backendInterface<QMediaServiceCameraInfoInterface>();
    return backend ? backend->cameraPosition(device) : QCamera::UnspecifiedPosition;
}

int OcelleBridge::cameraOrientation(const QByteArray &device) const
{
    const auto *const backend = backendInterface<QMediaServiceCameraInfoInterface>();
    return backend ? backend->cameraOrientation(device) : 0;
}
