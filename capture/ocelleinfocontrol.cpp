// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleinfocontrol.h"

#include "ocelleprovider.h"

OcelleInfoControl::OcelleInfoControl(OcelleProvider *provider)
    : m_provider(provider)
{
}

QCamera::Position OcelleInfoControl::cameraPosition(const QString &deviceName) const
{
    return m_provider->cameraPosition(deviceName.toUtf8());
}

int OcelleInfoControl::cameraOrientation(const QString &deviceName) const
{
    return m_provider->cameraOrientation(deviceName.toUtf8());
}
