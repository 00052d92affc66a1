// SPDX-License-Identifier: BSD-3-Clause
#include "ocellecaptureservice.h"

#include "ocellecapturecontrol.h"
#include "ocellecapturesession.h"
#include "ocelleinfocontrol.h"
#include "ocelleprovider.h"
#include "ocellerawvideosourcecontrol.h"
#include "ocelleselector.h"
#include "ocellevideorenderercontrol.h"
#include "ocelleviewfindersettings2.h"

OcelleCaptureService::OcelleCaptureService(OcelleProvider *provider, QObject *parent)
    : QMediaService(parent)
    , m_session(new OcelleCaptureSession(provider, this))
    , m_selector(new OcelleSelector(provider, this))
    , m_rendererControl(new OcelleVideoRendererControl(m_session, nullptr))
    , m_infoControl(new OcelleInfoControl(provider))
    , m_rawVideoSourceControl(new OcelleRawVideoSourceControl(m_session))
    , m_viewfinderSettingsControl(new OcelleViewfinderSettings2(m_session))
{
    connect(m_selector, SIGNAL(selectedDeviceChanged(QString)), m_session, SLOT(setDevice(QString)),
            Qt::DirectConnection);
    if (m_selector->deviceCount() != 0)
        m_session->setDevice(m_selector->deviceName(m_selector->selectedDevice()));
}

OcelleCaptureService::~OcelleCaptureService()
{
    m_session->shutdown();
    delete m_viewfinderSettingsControl;
    delete m_rawVideoSourceControl;
    delete m_infoControl;
    delete m_rendererControl;
    delete m_selector;
    delete m_session;
}

QMediaControl *OcelleCaptureService::requestControl(const char *name)
{
    if (!qstrcmp(name, QVideoDeviceSelectorControl_iid))
        return m_selector;
    if (!qstrcmp(name, QCameraControl_iid))
        return m_session->captureControl();
    if (!qstrcmp(name, QVideoRendererControl_iid))
        return m_rendererControl;
    if (!qstrcmp(name, QCameraInfoControl_iid))
        return m_infoControl;
    if (!qstrcmp(name, QPVRawVideoSourceControl_iid))
        return m_rawVideoSourceControl;
    if (!qstrcmp(name, QCameraViewfinderSettingsControl2_iid))
        return m_viewfinderSettingsControl;
    return nullptr;
}

void OcelleCaptureService::releaseControl(QMediaControl *) {}
