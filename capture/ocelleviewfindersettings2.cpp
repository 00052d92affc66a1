// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleviewfindersettings2.h"

#include "ocellecapturesession.h"

OcelleViewfinderSettings2::OcelleViewfinderSettings2(OcelleCaptureSession *session)
    : QCameraViewfinderSettingsControl2(session)
    , m_session(session)
{
}

QList<QCameraViewfinderSettings> OcelleViewfinderSettings2::supportedViewfinderSettings() const
{
    return m_session->supportedViewfinderSettings();
}

QCameraViewfinderSettings OcelleViewfinderSettings2::viewfinderSettings() const
{
    return m_session->viewfinderSettings();
}

void OcelleViewfinderSettings2::setViewfinderSettings(const QCameraViewfinderSettings &settings)
{
    m_session->setViewfinderSettings(settings);
}
