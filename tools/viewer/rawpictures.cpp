// SPDX-License-Identifier: BSD-3-Clause
#include "rawpictures.h"

#include "standinfunctions.h"

#include <QCamera>

namespace Viewer {

RawPictures::~RawPictures()
{
    detach();
}

void RawPictures::setCamera(QObject *camera)
{
    if (camera == m_camera)
        return;
    detach();
    m_camera = camera;
    attach();
    emit cameraChanged();
}

void RawPictures::begin()
{
    if (++m_users > 1)
        return;
    connect(&m_surface, &Tool::RecordSurface::pictureTaken, this, &RawPictures::pictureTaken,
            Qt::UniqueConnection);
    show(&m_surface);
}

void RawPictures::end()
{
    if (--m_users > 0)
        return;
    m_surface.disconnect(this);
    // Not from within the surface, whose call this may be.
    QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_users == 0)
                    show(nullptr);
            },
            Qt::QueuedConnection);
}

qint64 RawPictures::dropped() const
{
    const auto counted = Tool::statisticsOf(&m_surface); // none for a camera of another back end
    return counted ? qint64(counted->dropped) : 0;
}

void RawPictures::attach()
{
    const auto *const camera =
            m_camera ? m_camera->property("mediaObject").value<QCamera *>() : nullptr;
    QMediaService *const service = camera ? camera->service() : nullptr;
    m_service = service;
    m_control = service ? service->requestControl<QPVRawVideoSourceControl *>() : nullptr;
    if (m_users > 0)
        show(&m_surface);
}

void RawPictures::detach()
{
    show(nullptr);
    QMediaService *const service = m_service;
    if (service && m_control)
        service->releaseControl(m_control);
    m_control = nullptr;
    m_service = nullptr;
}

void RawPictures::show(QAbstractVideoSurface *surface)
{
    if (QPVRawVideoSourceControl *const control = m_control)
        control->setSurface(surface);
}

} // namespace Viewer
