// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleselector.h"

#include "ocelleprovider.h"

#include <QPointer>

namespace {

QByteArray cameraService()
{
    return QByteArrayLiteral("veltra.palaver.camera");
}

} // namespace

OcelleSelector::OcelleSelector(OcelleProvider *provider, QObject *parent)
    : QVideoDeviceSelectorControl(parent)
    , m_provider(provider)
{
    // Listens first: a change on another thread while the default is asked for arrives later.
    connect(provider, &OcelleProvider::devicesChanged, this, &OcelleSelector::onDevicesChanged);
    updateDefaultCamera();
}

int OcelleSelector::deviceCount() const
{
    return m_provider->devices(cameraService()).size();
}

QString OcelleSelector::deviceName(int index) const
{
    const QList<QByteArray> ids = m_provider->devices(cameraService());
    return index >= 0 && index < ids.size() ? QString(ids.at(index)) : QString();
}

QString OcelleSelector::deviceDescription(int index) const
{
    const QList<QByteArray> ids = m_provider->devices(cameraService());
    if (index < 0 || index >= ids.size())
        return QString();
    return m_provider->deviceDescription(cameraService(), ids.at(index));
}

int OcelleSelector::defaultDevice() const
{
    return getCameraIndexById(m_provider->defaultDevice(cameraService()));
}

int OcelleSelector::selectedDevice() const
{
    return getCameraIndexById(m_selectedId);
}

QByteArray OcelleSelector::getCameraIdByIndex(int index) const
{
    return m_provider->devices(cameraService()).value(index);
}

int OcelleSelector::getCameraIndexById(const QByteArray &id) const
{
    return m_provider->devices(cameraService()).indexOf(id);
}

void OcelleSelector::updateDefaultCamera()
{
    if (m_selectedId.isEmpty())
        m_selectedId = m_provider->defaultDevice(cameraService());
}

void OcelleSelector::updateCameraList()
{
    const QByteArray before = m_selectedId;
    const int index = getCameraIndexById(m_selectedId);
    if (index < 0)
        m_selectedId.clear();
    updateDefaultCamera();

    const QPointer<OcelleSelector> self(this); // a slot may take the service down
    emit devicesChanged();
    if (!self || m_selectedId == before)
        return;
    // The index as it was: -1 where the default camera took over.
    emit selectedDeviceChanged(index);
    if (self)
        emit selectedDeviceChanged(QString(m_selectedId));
}

void OcelleSelector::setSelectedDevice(int index)
{
    const QByteArray id = getCameraIdByIndex(index);
    if (id == m_selectedId)
        return;
    m_selectedId = id;
    const QPointer<OcelleSelector> self(this); // a slot may take the service down
    emit selectedDeviceChanged(QString(id));
    if (self)
        emit selectedDeviceChanged(index);
}

void OcelleSelector::onDevicesChanged(const QByteArray &service)
{
    if (service == cameraService())
        updateCameraList();
}
