// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <QObject>

#include <ocelle/camera.h>

#include <memory>
#include <mutex>

class QAbstractVideoSurface;

/*!
 * The yardstick: brings pictures to a surface with as little as Qt allows, a slot under a mutex, one
 * posted event and a QVideoFrame around the planes; and with a copy of the picture if asked.
 *
 * Threads: onCameraFrame() on the camera's, the rest on the surface's.
 * Owner:   the benchmark.
 */
class FloorListener : public QObject, public Veltra::Ocelle::CameraListener
{
    Q_OBJECT
public:
    FloorListener(QAbstractVideoSurface *surface, bool copy);

    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override;
    void onCameraError(const std::string &message) override;
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter parameter,
                                  const std::string &value) override;

protected:
    void customEvent(QEvent *event) override;

private:
    QAbstractVideoSurface *const m_surface; // not owned
    const bool m_copy;

    std::mutex m_mutex; // guards m_buffer
    std::shared_ptr<Veltra::Ocelle::GraphicBuffer> m_buffer;
};
