// SPDX-License-Identifier: BSD-3-Clause
#include "camerapreview.h"

namespace Viewer {

CameraPreview::CameraPreview(QObject *parent)
    : QObject(parent)
{
    connect(&m_surface, &ForwardingSurface::mirroredChanged, this, &CameraPreview::mirroredChanged);
}

CameraPreview::~CameraPreview()
{
    show(nullptr);
}

void CameraPreview::setCamera(QObject *item)
{
    if (item == m_item)
        return;
    show(nullptr);
    m_item = item;
    m_camera = item ? item->property("mediaObject").value<QCamera *>() : nullptr;
    show(&m_surface);
    emit cameraChanged();
}

void CameraPreview::setVideoSurface(QAbstractVideoSurface *surface)
{
    if (surface == m_surface.target())
        return;
    m_surface.setTarget(surface);
    emit videoSurfaceChanged();
}

void CameraPreview::show(QAbstractVideoSurface *surface)
{
    if (QCamera *const camera = m_camera)
        camera->setViewfinder(surface);
}

} // namespace Viewer
