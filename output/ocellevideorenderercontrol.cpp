// SPDX-License-Identifier: BSD-3-Clause
#include "ocellevideorenderercontrol.h"

#include "ocellevideooutput.h"
#include "ocellevideosession.h"

#include <utility>

OcelleVideoRendererControl::OcelleVideoRendererControl(OcelleVideoSession *session, QObject *parent)
    : QVideoRendererControl(parent)
    , m_session(session)
{
}

OcelleVideoRendererControl::~OcelleVideoRendererControl()
{
    dropOutput();
}

QAbstractVideoSurface *OcelleVideoRendererControl::surface() const
{
    return m_surface;
}

void OcelleVideoRendererControl::setSurface(QAbstractVideoSurface *surface)
{
    if (m_surface == surface)
        return;
    m_surface = surface;
    if (!surface) {
        dropOutput();
        return;
    }
    if (m_output) {
        m_output->setSurface(surface);
        return;
    }
    m_output = new OcelleVideoOutput(m_session);
    m_output->setSurface(surface);
    m_session->setVideoOutput(m_output);
}

/*!
 * Forgets the output before anything else: as it goes it stops its surface, and the application may
 * answer that by setting another one or by taking the service down.
 */
void OcelleVideoRendererControl::dropOutput()
{
    OcelleVideoOutput *const output = std::exchange(m_output, nullptr);
    if (!output)
        return;
    m_session->setVideoOutput(nullptr);
    output->setParent(nullptr); // or a session that is deleted meanwhile takes it along once more
    delete output;
}
