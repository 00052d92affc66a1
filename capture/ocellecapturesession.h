// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellevideosession.h"
#include "ocelleworkerthread.h"

#include <QCamera>
#include <QCameraViewfinderSettings>
#include <QList>
#include <QMutex>

#include <ocelle/camera.h>

#include <memory>
#include <string>

class OcelleCaptureControl;
class OcelleCaptureWorker;
class OcelleProvider;

/*!
 * The heart of one camera service: turns Qt's camera states and settings into requests to the
 * worker, the worker's statuses into the control's signals, and hands every picture to up to two
 * outputs, the viewfinder and the raw video sink.
 *
 * Threads: grouped below; lives on the application thread. The control's error() is emitted on
 *          whatever thread the error came up, everything else on the application thread.
 * Owner:   OcelleCaptureService, which calls shutdown() before it deletes the session.
 * Errors:  QCamera::Error 1 with a text; 0 with none after each successful start.
 *
 * The application may take the service down from a slot of any of the control's signals that is
 * called on the application thread.
 */
class OcelleCaptureSession : public OcelleVideoSession, public Veltra::Ocelle::CameraListener
{
    Q_OBJECT
public:
    OcelleCaptureSession(OcelleProvider *provider, QObject *parent);
    ~OcelleCaptureSession();

    // Application thread
    OcelleCaptureControl *captureControl() const;
    void requestState(QCamera::State state);
    /*! Comes down to \a state and goes back up again; nothing where it is no higher already. */
    void restartViaState(QCamera::State state);
    void setViewfinderSettings(const QCameraViewfinderSettings &settings);
    /*! Makes \a sink, not owned, the second consumer of the pictures; null for none. */
    void setVideoSink(OcelleVideoOutput *sink);
    /*! Stops the camera and ends the worker thread; events are served meanwhile. */
    void shutdown();

    // Worker thread
    /*!
     * Takes the first supported settings that answer the requested ones, stores them as the
     * requested ones and copies them to \a chosen. False where none does.
     */
    bool applyViewfinderSettings(QCameraViewfinderSettings *chosen = nullptr);

    // Any thread
    QCameraViewfinderSettings viewfinderSettings() const;
    QList<QCameraViewfinderSettings> supportedViewfinderSettings();
    QCamera::State requestedState() const;
    QCamera::Status status() const;
    bool mirrorOutput() const override;
    void setError(int code, const QString &text);

    // Library threads
    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override;
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter parameter,
                                  const std::string &value) override;
    void onCameraError(const std::string &message) override;

signals:
    void error(int error, const QString &errorString);

public slots:
    void setDevice(const QString &device);
    void onStatusChanged(QCamera::Status status); // the worker waits meanwhile

private:
    void stopVideoOutput();
    void mirrorOutputs();

    OcelleCaptureControl *const m_captureControl; // owned
    OcelleWorkerThread *const m_workerThread;     // owned
    OcelleCaptureWorker *const m_worker;          // owned, lives in that thread

    // Guarded by the session mutex, like the video output
    QList<QCameraViewfinderSettings> m_supportedSettings; // empty until the camera is loaded
    OcelleVideoOutput *m_videoSink = nullptr;             // not owned

    mutable QMutex m_settingsMutex; // guards m_viewfinderSettings; never held while calling out
    QCameraViewfinderSettings m_viewfinderSettings; // as requested, then as chosen
};
