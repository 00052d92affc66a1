// SPDX-License-Identifier: BSD-3-Clause
#include "ocellecapturesession.h"

#include "ocellecapturecontrol.h"
#include "ocellecapturelog.h"
#include "ocellecaptureworker.h"
#include "ocelleprovider.h"
#include "ocellevideooutput.h"

#include <QMutexLocker>
#include <QPointer>

namespace {

bool isGiven(const QSize &size)
{
    return size.width() >= 1 && size.height() >= 1;
}

bool isGiven(qreal frameRate)
{
    return qAbs(frameRate) > 0.00001; // Qt's own bound for a float that is null
}

bool answers(const QCameraViewfinderSettings &offer, const QCameraViewfinderSettings &request)
{
    if (isGiven(request.resolution()) && offer.resolution() != request.resolution())
        return false;
    if (isGiven(request.minimumFrameRate()) &&
        !qFuzzyCompare(float(request.minimumFrameRate()), float(offer.minimumFrameRate())))
        return false;
    if (isGiven(request.maximumFrameRate()) &&
        !qFuzzyCompare(float(request.maximumFrameRate()), float(offer.maximumFrameRate())))
        return false;
    // The requested pixel format is deliberately not looked at.
    return !isGiven(request.pixelAspectRatio()) ||
           offer.pixelAspectRatio() == request.pixelAspectRatio();
}

QCameraViewfinderSettings firstAnswer(const QList<QCameraViewfinderSettings> &offers,
                                      const QCameraViewfinderSettings &request)
{
    for (const QCameraViewfinderSettings &offer : offers) {
        if (answers(offer, request))
            return offer;
    }
    return QCameraViewfinderSettings();
}

} // namespace

OcelleCaptureSession::OcelleCaptureSession(OcelleProvider *provider, QObject *parent)
    : OcelleVideoSession(parent)
    , m_captureControl(new OcelleCaptureControl(this))
    , m_workerThread(new OcelleWorkerThread(
              QStringLiteral("CaptureWorker"),
              [this](int status) { onStatusChanged(QCamera::Status(status)); }))
    , m_worker(new OcelleCaptureWorker(this, provider->cameraManager()))
{
    qRegisterMetaType<QCamera::Status>("QCamera::Status");
    connect(
            m_worker, &OcelleCaptureWorker::statusChanged, this,
            [this](QCamera::Status status) { m_workerThread->deliverStatus(status); },
            Qt::DirectConnection);
    m_workerThread->start(m_worker);
}

OcelleCaptureSession::~OcelleCaptureSession()
{
    if (m_workerThread->isRunning())
        shutdown();
    delete m_captureControl;
    delete m_workerThread;
    delete m_worker;
}

OcelleCaptureControl *OcelleCaptureSession::captureControl() const
{
    return m_captureControl;
}

void OcelleCaptureSession::requestState(QCamera::State state)
{
    if (state == m_worker->requestedState())
        return;
    m_worker->requestState(state);
    emit m_captureControl->stateChanged(state);
}

void OcelleCaptureSession::restartViaState(QCamera::State state)
{
    const QCamera::State current = m_worker->requestedState();
    if (current <= state)
        return;
    const QPointer<OcelleCaptureSession> self(this); // a slot may take the service down
    requestState(state);
    if (self)
        requestState(current);
}

void OcelleCaptureSession::setDevice(const QString &device)
{
    m_worker->setDevice(device);
    restartViaState(QCamera::UnloadedState);
}

void OcelleCaptureSession::setViewfinderSettings(const QCameraViewfinderSettings &settings)
{
    qCDebug(qLcCapture) << "Viewfinder settings" << settings.resolution()
                        << settings.minimumFrameRate();
    {
        QMutexLocker locker(&m_settingsMutex);
        if (settings == m_viewfinderSettings)
            return;
        m_viewfinderSettings = settings;
    }
    restartViaState(QCamera::LoadedState);
}

void OcelleCaptureSession::setVideoSink(OcelleVideoOutput *sink)
{
    QMutexLocker locker(&m_mutex);
    if (m_videoSink)
        m_videoSink->stop();
    m_videoSink = sink;
    if (m_videoSink)
        m_videoSink->setMirrored(mirrorOutput());
}

void OcelleCaptureSession::shutdown()
{
    requestState(QCamera::UnloadedState);
    m_workerThread->quit();
    m_workerThread->waitServingEvents();
    setVideoOutput(nullptr);
    setVideoSink(nullptr);
}

bool OcelleCaptureSession::applyViewfinderSettings(QCameraViewfinderSettings *chosen)
{
    const QList<QCameraViewfinderSettings> supported = supportedViewfinderSettings();
    QMutexLocker locker(&m_settingsMutex);
    const QCameraViewfinderSettings settings = firstAnswer(supported, m_viewfinderSettings);
    if (settings.isNull())
        return false;
    m_viewfinderSettings = settings;
    if (chosen)
        *chosen = settings;
    return true;
}

QCameraViewfinderSettings OcelleCaptureSession::viewfinderSettings() const
{
    QMutexLocker locker(&m_settingsMutex);
    return m_viewfinderSettings;
}

QList<QCameraViewfinderSettings> OcelleCaptureSession::supportedViewfinderSettings()
{
    QMutexLocker locker(&m_mutex);
    if (m_supportedSettings.isEmpty() && m_worker->status() > QCamera::UnloadingStatus)
        m_supportedSettings = m_worker->supportedViewfinderSettings();
    return m_supportedSettings;
}

QCamera::State OcelleCaptureSession::requestedState() const
{
    return m_worker->requestedState();
}

QCamera::Status OcelleCaptureSession::status() const
{
    return m_worker->status();
}

bool OcelleCaptureSession::mirrorOutput() const
{
    return m_worker->facing() == QCamera::FrontFace;
}

void OcelleCaptureSession::setError(int code, const QString &text)
{
    if (code != QCamera::NoError)
        qCCritical(qLcCapture) << text << code;
    emit m_captureControl->QCameraControl::error(code, text);
}

void OcelleCaptureSession::onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer)
{
    QMutexLocker locker(&m_mutex);
    if (m_videoOutput)
        m_videoOutput->onGraphicBuffer(buffer);
    if (m_videoSink)
        m_videoSink->onGraphicBuffer(buffer);
}

void OcelleCaptureSession::onCameraParameterChanged(Veltra::Ocelle::CameraParameter,
                                                    const std::string &)
{
}

void OcelleCaptureSession::onCameraError(const std::string &message)
{
    const QString text = QString::fromUtf8(message.c_str());
    qCWarning(qLcCapture) << "Capture error" << text;
    setError(QCamera::CameraError, QStringLiteral("Hardware error ") + text);
}

void OcelleCaptureSession::onStatusChanged(QCamera::Status status)
{
    {
        QMutexLocker locker(&m_mutex);
        switch (status) {
        case QCamera::UnloadedStatus:
            m_supportedSettings.clear();
            stopVideoOutput();
            break;
        case QCamera::LoadedStatus:
            if (m_supportedSettings.isEmpty())
                m_supportedSettings = m_worker->supportedViewfinderSettings();
            stopVideoOutput();
            break;
        case QCamera::StandbyStatus:
            stopVideoOutput();
            break;
        case QCamera::StartingStatus:
            mirrorOutputs();
            break;
        default:
            break;
        }
    }
    emit m_captureControl->QCameraControl::statusChanged(status);
}

/*! With the session mutex held. */
void OcelleCaptureSession::stopVideoOutput()
{
    if (m_videoOutput)
        m_videoOutput->stop();
    if (m_videoSink)
        m_videoSink->stop();
}

/*! With the session mutex held. */
void OcelleCaptureSession::mirrorOutputs()
{
    const bool mirrored = mirrorOutput();
    if (m_videoOutput)
        m_videoOutput->setMirrored(mirrored);
    if (m_videoSink)
        m_videoSink->setMirrored(mirrored);
}
