// SPDX-License-Identifier: BSD-3-Clause
#include "ocellevideooutput.h"

#include <QRect>

#include <utility>

OcelleVideoOutput::OcelleVideoOutput(QObject *parent)
    : QObject(parent)
    , m_output(nullptr)
{
}

QAbstractVideoSurface *OcelleVideoOutput::surface() const
{
    return m_output.videoSurface();
}

void OcelleVideoOutput::setSurface(QAbstractVideoSurface *surface)
{
    m_output.setVideoSurface(surface);
}

void OcelleVideoOutput::stop()
{
    m_output.stop();
}

void OcelleVideoOutput::setViewport(const QRect &viewport)
{
    m_output.setViewport(viewport);
}

void OcelleVideoOutput::setMirrored(bool mirrored)
{
    m_output.setMirrored(mirrored);
}

void OcelleVideoOutput::onVideoFrame(const Veltra::Ocelle::YCbCrFrame *frame)
{
    m_output.onVideoFrame(frame);
}

void OcelleVideoOutput::onGraphicBuffer(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer)
{
    m_output.onGraphicBuffer(std::move(buffer));
}
