// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocelledevice.h"

#include <QCamera>
#include <QCameraViewfinderSettings>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QString>

class OcelleCaptureSession;

/*!
 * Drives the camera device toward the state that was asked for, one step a call, on the thread
 * named "CaptureWorker".
 *
 * Threads: grouped below; built and destroyed on the application thread, moved to the worker
 *          thread in between.
 * Owner:   OcelleCaptureSession, which deletes it after that thread has finished.
 * Errors:  reported through OcelleCaptureSession::setError(). Each lowers the wish without a word
 *          to the camera control: the control's state then answers less than was asked for.
 */
class OcelleCaptureWorker : public QObject
{
    Q_OBJECT
public:
    OcelleCaptureWorker(OcelleCaptureSession *session, Veltra::Ocelle::CameraManager *manager);
    ~OcelleCaptureWorker();

    // Any thread
    void requestState(QCamera::State state);
    QCamera::State requestedState() const;
    QCamera::Status status() const;
    QCamera::Position facing() const;
    QList<QCameraViewfinderSettings> supportedViewfinderSettings() const;
    /*! The camera to open next; what is open stays open. */
    void setDevice(const QString &id);

    // Worker thread
    bool load();
    /*! False only where no supported setting matches; a camera that refuses is reported. */
    bool start();
    void stop();
    void unload();

signals:
    void statusChanged(QCamera::Status status); // on the worker thread, no lock held

private slots:
    //  Unloaded --load--> Loaded --start--> Active
    //  Unloaded <-unload- Loaded <--stop--- Active, straight to the floor
    void applyState();
    void onStatusChanged(QCamera::Status status);

private:
    enum class Step { None, Unload, Stop, Load, Start };

    Step nextStep(quint32 *serial);
    bool load(quint32 serial);
    bool start(quint32 serial);
    void postApplyState();
    quint32 requestSerial() const;
    void fallBackTo(QCamera::State state, quint32 serial);
    void setRequest(QCamera::State state);
    void reportError(QCamera::Error code, const QString &text);

    OcelleDevice m_device;                 // calls that change it: worker thread
    OcelleCaptureSession *const m_session; // not owned, outlives the worker's thread; may be null

    mutable QMutex m_requestMutex; // guards the four below; never held while calling out
    QCamera::State m_requestedState = QCamera::UnloadedState;
    // The lowest state to pass through on the way: a restart asks for less, then more, in one go.
    QCamera::State m_transitionFloor = QCamera::UnloadedState;
    quint32 m_requestSerial = 0; // counts requests
    QString m_deviceId;

    QCamera::State m_currentState = QCamera::UnloadedState; // worker thread; from device statuses
};
