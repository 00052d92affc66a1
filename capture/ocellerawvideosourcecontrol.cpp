// SPDX-License-Identifier: BSD-3-Clause
#include "ocellerawvideosourcecontrol.h"

#include "ocellecapturesession.h"
#include "ocellevideooutput.h"

OcelleRawVideoSourceControl::OcelleRawVideoSourceControl(OcelleCaptureSession *session)
    : m_session(session)
{
}

OcelleRawVideoSourceControl::~OcelleRawVideoSourceControl()
{
    if (!m_output)
        return;
    m_session->setVideoSink(nullptr);
    delete m_output;
}

QAbstractVideoSurface *OcelleRawVideoSourceControl::surface() const
{
    return m_surface;
}

void OcelleRawVideoSourceControl::setSurface(QAbstractVideoSurface *surface)
{
    if (m_surface == surface)
        return;
    m_surface = surface;
    if (!surface)
        return;
    if (m_output) {
        m_output->setSurface(surface);
        return;
    }
    m_output = new OcelleVideoOutput(this);
    m_output->setSurface(surface);
    m_session->setVideoSink(m_output);
}
