// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledecodeservice.h"

#include "ocelledecodecontrol.h"
#include "ocelledecodesession.h"
#include "ocellevideorenderercontrol.h"

OcelleDecodeService::OcelleDecodeService(OcelleProvider *provider, QObject *parent)
    : QMediaService(parent)
    , m_session(new OcelleDecodeSession(provider, this))
    , m_rendererControl(new OcelleVideoRendererControl(m_session, this))
{
}

OcelleDecodeService::~OcelleDecodeService()
{
    m_session->shutdown();
    // Qt would delete the session first, and with it the output that the control still holds.
    delete m_rendererControl;
    delete m_session;
}

QMediaControl *OcelleDecodeService::requestControl(const char *name)
{
    if (!qstrcmp(name, QVideoRendererControl_iid))
        return m_rendererControl;
    if (!qstrcmp(name, QPVDecodeControl_iid))
        return m_session->decodeControl();
    return nullptr;
}

void OcelleDecodeService::releaseControl(QMediaControl *) {}
