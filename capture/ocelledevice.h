// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCamera>
#include <QCameraViewfinderSettings>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QVideoFrame>
#include <QWaitCondition>

#include <ocelle/camera.h>

#include <atomic>
#include <memory>

/*!
 * Owns one opened camera and speaks Qt's camera vocabulary for it.
 *
 * Threads: grouped below. Status changes are emitted on the worker thread.
 * Owner:   OcelleCaptureWorker, by value.
 * Units:   frames per second, degrees, pixels.
 * Errors:  by result and status; the worker words them.
 */
class OcelleDevice : public QObject
{
    Q_OBJECT
public:
    explicit OcelleDevice(Veltra::Ocelle::CameraManager *manager); // never null, not owned
    ~OcelleDevice();

    // Worker thread
    //
    //  Unloaded --load--> Loading --> Loaded --start--> Starting --> Active --stop--> Stopping
    //     ^                  |           ^                 |                              |
    //     |<-- not opened ---'           '<--- refused ----'     Standby <----------------'
    //     '--- Unloading <--close-- (any)                        Standby --start--> Starting
    //
    /*! Opens the camera \a id for \a listener. Refused, with Unloaded set, in any status but that. */
    bool load(const QString &id, Veltra::Ocelle::CameraListener *listener);
    /*! Captures with the size and minimum rate of \a settings; where refused, Loaded is set. */
    bool start(const QCameraViewfinderSettings &settings);
    void stop();
    void close();
    bool captureStarted();
    void setStatus(QCamera::Status status);

    // Any thread
    QCamera::Status status() const;
    QCamera::Position facing() const;
    /*! What the camera can deliver: every size and rate of its first pixel format, then the next. */
    QList<QCameraViewfinderSettings> supportedViewfinderSettings() const;
    QVideoFrame::PixelFormat toQtPixelFormat(Veltra::Ocelle::PixelFormat format) const;

signals:
    void statusChanged(QCamera::Status status); // on the worker thread, no lock held

private:
    class CameraUse;

    void replaceCamera(std::shared_ptr<Veltra::Ocelle::Camera> camera);

    Veltra::Ocelle::CameraManager *const m_cameraManager; // not owned

    // Guards m_camera and m_cameraUsers; never held while calling out. The camera is replaced on the
    // worker thread only, and only while no other thread is using it, so that no other thread ever
    // drops the last reference.
    mutable QMutex m_cameraMutex;
    mutable QWaitCondition m_cameraUnused;
    std::shared_ptr<Veltra::Ocelle::Camera> m_camera; // empty when unloaded
    mutable int m_cameraUsers = 0;

    Veltra::Ocelle::CameraCapability m_capability {}; // worker thread; what start() last asked for
    std::atomic<QCamera::Status> m_status {
        QCamera::UnloadedStatus
    }; // written by the worker thread
};
