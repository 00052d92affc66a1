// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "forwardingsurface.h"

#include <QCamera>
#include <QObject>
#include <QPointer>

namespace Viewer {

/*!
 * The preview of a camera for a VideoOutput whose source this is, and which is to mirror it.
 *
 * Threads: the application thread.
 */
class CameraPreview : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject *camera READ camera WRITE setCamera NOTIFY cameraChanged) // QML's
    Q_PROPERTY(QAbstractVideoSurface *videoSurface READ videoSurface WRITE setVideoSurface NOTIFY
                       videoSurfaceChanged)
    /*! The one that the camera's pictures come to, for statistics. */
    Q_PROPERTY(QAbstractVideoSurface *outputSurface READ outputSurface CONSTANT)
    Q_PROPERTY(bool mirrored READ isMirrored NOTIFY mirroredChanged)
public:
    explicit CameraPreview(QObject *parent = nullptr);
    ~CameraPreview() override;

    QObject *camera() const { return m_item; }
    void setCamera(QObject *item);
    QAbstractVideoSurface *videoSurface() const { return m_surface.target(); }
    void setVideoSurface(QAbstractVideoSurface *surface);
    QAbstractVideoSurface *outputSurface() { return &m_surface; }
    bool isMirrored() const { return m_surface.isMirrored(); }

signals:
    void cameraChanged();
    void videoSurfaceChanged();
    void mirroredChanged();

private:
    void show(QAbstractVideoSurface *surface);

    ForwardingSurface m_surface;
    QPointer<QObject> m_item;
    QPointer<QCamera> m_camera;
};

} // namespace Viewer
