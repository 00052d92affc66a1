// SPDX-License-Identifier: BSD-3-Clause
#include "ocellecaptureworker.h"

#include "ocellecapturesession.h"
#include "ocelledebug.h"

#include <QMetaObject>
#include <QMutexLocker>

OcelleCaptureWorker::OcelleCaptureWorker(OcelleCaptureSession *session,
                                         Veltra::Ocelle::CameraManager *manager)
    : m_device(manager)
    , m_session(session)
{
    connect(&m_device, &OcelleDevice::statusChanged, this, &OcelleCaptureWorker::onStatusChanged,
            Qt::DirectConnection);
}

OcelleCaptureWorker::~OcelleCaptureWorker() = default;

void OcelleCaptureWorker::requestState(QCamera::State state)
{
    {
        QMutexLocker locker(&m_requestMutex);
        setRequest(state);
    }
    postApplyState();
}

QCamera::State OcelleCaptureWorker::requestedState() const
{
    QMutexLocker locker(&m_requestMutex);
    return m_requestedState;
}

QCamera::Status OcelleCaptureWorker::status() const
{
    return m_device.status();
}

QCamera::Position OcelleCaptureWorker::facing() const
{
    return m_device.facing();
}

QList<QCameraViewfinderSettings> OcelleCaptureWorker::supportedViewfinderSettings() const
{
    return m_device.supportedViewfinderSettings();
}

void OcelleCaptureWorker::setDevice(const QString &id)
{
    QMutexLocker locker(&m_requestMutex);
    if (m_deviceId != id)
        m_deviceId = id;
}

bool OcelleCaptureWorker::load()
{
    return load(requestSerial());
}

/*! Loads on behalf of the request numbered \a serial. */
bool OcelleCaptureWorker::load(quint32 serial)
{
    QString id;
    {
        QMutexLocker locker(&m_requestMutex);
        id = m_deviceId;
    }
    const bool loaded = m_device.load(id, m_session);
    if (!loaded) {
        fallBackTo(QCamera::UnloadedState, serial);
        reportError(QCamera::CameraError, QStringLiteral("Camera does not open"));
    }
    return loaded;
}

bool OcelleCaptureWorker::start()
{
    return start(requestSerial());
}

/*! Starts on behalf of the request numbered \a serial. */
bool OcelleCaptureWorker::start(quint32 serial)
{
    QCameraViewfinderSettings settings;
    if (!m_session || !m_session->applyViewfinderSettings(&settings)) {
        fallBackTo(QCamera::LoadedState, serial);
        reportError(QCamera::CameraError,
                    QStringLiteral("Couldn't find supported camera settings"));
        return false;
    }
    if (m_device.start(settings)) {
        reportError(QCamera::NoError, QString()); // tells the application that it started
    } else {
        fallBackTo(QCamera::LoadedState, serial);
        reportError(QCamera::CameraError, QStringLiteral("Camera does not start"));
    }
    return true;
}

void OcelleCaptureWorker::stop()
{
    m_device.stop();
}

void OcelleCaptureWorker::unload()
{
    m_device.close();
}

void OcelleCaptureWorker::applyState()
{
    assertOnOwnThread(this);
    quint32 serial;
    switch (nextStep(&serial)) {
    case Step::None:
        break;
    case Step::Unload:
        unload();
        break;
    case Step::Stop:
        stop();
        break;
    case Step::Load:
        load(serial);
        break;
    case Step::Start:
        start(serial);
        break;
    }
}

void OcelleCaptureWorker::onStatusChanged(QCamera::Status status)
{
    switch (status) {
    case QCamera::UnloadedStatus:
        m_currentState = QCamera::UnloadedState;
        postApplyState();
        break;
    case QCamera::LoadedStatus:
    case QCamera::StandbyStatus:
        m_currentState = QCamera::LoadedState;
        postApplyState();
        break;
    case QCamera::ActiveStatus:
        m_currentState = QCamera::ActiveState;
        postApplyState();
        break;
    case QCamera::UnavailableStatus:
    case QCamera::LoadingStatus:
    case QCamera::UnloadingStatus:
    case QCamera::StartingStatus:
    case QCamera::StoppingStatus:
        break;
    }
    emit statusChanged(status);
}

/*!
 * Decides on the next step and raises the floor once the device has come down to it. \a serial is
 * set to the number of the request that the step serves.
 */
OcelleCaptureWorker::Step OcelleCaptureWorker::nextStep(quint32 *serial)
{
    QMutexLocker locker(&m_requestMutex);
    *serial = m_requestSerial;
    if (m_transitionFloor < m_currentState)
        return m_transitionFloor == QCamera::UnloadedState ? Step::Unload : Step::Stop;
    if (m_currentState >= m_requestedState)
        return Step::None;

    m_transitionFloor = m_requestedState;
    if (m_requestedState == QCamera::LoadedState)
        return Step::Load;
    switch (m_device.status()) {
    case QCamera::UnloadedStatus:
        return Step::Load;
    case QCamera::LoadedStatus:
    case QCamera::StandbyStatus:
        return Step::Start;
    default: // on its way; the status it comes to posts the next call
        return Step::None;
    }
}

void OcelleCaptureWorker::postApplyState()
{
    QMetaObject::invokeMethod(this, "applyState", Qt::QueuedConnection);
}

quint32 OcelleCaptureWorker::requestSerial() const
{
    QMutexLocker locker(&m_requestMutex);
    return m_requestSerial;
}

/*!
 * Lowers the wish to \a state after a failure. A wish made since \a serial that is lower already
 * stays: a failure never raises it.
 */
void OcelleCaptureWorker::fallBackTo(QCamera::State state, quint32 serial)
{
    {
        QMutexLocker locker(&m_requestMutex);
        if (m_requestSerial != serial && m_requestedState < state)
            return;
        setRequest(state);
    }
    postApplyState();
}

/*! With the request mutex held. */
void OcelleCaptureWorker::setRequest(QCamera::State state)
{
    m_transitionFloor = qMin(m_transitionFloor, state);
    m_requestedState = state;
    ++m_requestSerial;
}

void OcelleCaptureWorker::reportError(QCamera::Error code, const QString &text)
{
    if (m_session)
        m_session->setError(code, text);
}
