// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "recordsurface.h"

#include <QMediaService>
#include <QObject>
#include <QPointer>

#include <palaver/qpvrawvideosourcecontrol.h>

namespace Viewer {

/*!
 * A camera's pictures as it delivers them, beside its preview, for those who save them.
 *
 * Threads: the application thread.
 */
class RawPictures : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QObject *camera READ camera WRITE setCamera NOTIFY cameraChanged)
public:
    using QObject::QObject;
    ~RawPictures() override;

    /*! QML's camera; null for none. */
    QObject *camera() const { return m_camera; }
    void setCamera(QObject *camera);
    /*! Whether there is a camera that has such pictures. */
    bool isAvailable() const { return m_control; }

    /*! pictureTaken() is emitted after the first begin() and until the last end(). */
    void begin();
    void end();

    /*! Pictures that never came because this thread was busy, since begin(). */
    qint64 dropped() const;

signals:
    void cameraChanged();
    void pictureTaken(const QVideoFrame &frame);

private:
    void attach();
    void detach();
    void show(QAbstractVideoSurface *surface); // where there is a camera

    Tool::RecordSurface m_surface;
    QPointer<QObject> m_camera;
    QPointer<QMediaService> m_service; // the camera's, as is the control
    QPointer<QPVRawVideoSourceControl> m_control;
    int m_users = 0;
};

} // namespace Viewer
