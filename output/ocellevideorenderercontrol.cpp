#include "ocellevideorenderercontrol.h"

#include "ocellevideooutput.h"
#include "ocellevideosession.h"

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

void OcelleVideoRendererControl::dropOutput()
{
    if (!m_output)
        return;
    m_session->setVideoOutput(nullptr);
    delete m_output;
    m_output = nullptr;
}
