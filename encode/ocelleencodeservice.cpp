// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodeservice.h"

#include "ocelleencodedvideosourcecontrol.h"
#include "ocelleencodersettingscontrol.h"
#include "ocelleencodesession.h"

#include <palaver/qpvencodecontrol.h>

OcelleEncodeService::OcelleEncodeService(OcelleProvider *provider, QObject *parent)
    : QMediaService(parent)
    , m_session(new OcelleEncodeSession(provider, this))
    , m_settingsControl(new OcelleEncoderSettingsControl(m_session, this))
    , m_videoSourceControl(new OcelleEncodedVideoSourceControl(m_session, this))
{
}

OcelleEncodeService::~OcelleEncodeService()
{
    m_session->shutdown();
    delete m_videoSourceControl;
    delete m_settingsControl;
    delete m_session;
}

QMediaControl *OcelleEncodeService::requestControl(const char *name)
{
    if (!qstrcmp(name, QPVEncodeControl_iid))
        return m_session->encodeControl();
    if (!qstrcmp(name, QVideoEncoderSettingsControl_iid))
        return m_settingsControl;
    if (!qstrcmp(name, QPVEncodedVideoSourceControl_iid))
        return m_videoSourceControl;
    return nullptr;
}

void OcelleEncodeService::releaseControl(QMediaControl *) {}
