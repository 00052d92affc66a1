// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "picturecounter.h"

#include <QCamera>
#include <QObject>

/*! A camera that streams, as QML's Camera offers it to others. */
class StreamingCamera
{
public:
    explicit StreamingCamera(const QByteArray &id)
        : m_camera(id)
    {
        m_item.setProperty("mediaObject", QVariant::fromValue<QObject *>(&m_camera));
        m_camera.setViewfinder(&m_surface);
    }

    QObject *item() { return &m_item; }
    QCamera *camera() { return &m_camera; }
    PictureCounter *surface() { return &m_surface; }

private:
    PictureCounter m_surface; // outlives the camera
    QCamera m_camera;
    QObject m_item;
};
