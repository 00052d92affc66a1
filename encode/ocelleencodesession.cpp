// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodesession.h"

#include "ocelleencodecontrol.h"
#include "ocelleencodelistener.h"
#include "ocelleencodelog.h"
#include "ocelleencoder.h"
#include "ocelleencodeworker.h"
#include "ocelleprovider.h"

#include <QMutexLocker>
#include <QPointer>
#include <QVariant>

#include <ocelle/codecmanager.h>
#include <palaver/qpvencodedvideoframe.h>

#include <utility>

using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::VideoEncoderParameter;

namespace {

/*! Whether encoding options differ that an encoder takes only when it starts. */
bool isTurnedOtherwise(const QVideoEncoderSettings &one, const QVideoEncoderSettings &other)
{
    const QString rotate = QStringLiteral("rotate");
    const QString mirrorH = QStringLiteral("mirrorH");
    const QString mirrorV = QStringLiteral("mirrorV");
    return one.encodingOption(rotate).toInt() != other.encodingOption(rotate).toInt() ||
           one.encodingOption(mirrorH).toBool() != other.encodingOption(mirrorH).toBool() ||
           one.encodingOption(mirrorV).toBool() != other.encodingOption(mirrorV).toBool();
}

} // namespace

OcelleEncodeSession::OcelleEncodeSession(OcelleProvider *provider, QObject *parent)
    : QObject(parent)
    , m_codecManager(provider->codecManager())
    , m_control(new OcelleEncodeControl(this))
    , m_listener(OcelleEncodeListener::create(this))
    , m_workerThread(new OcelleWorkerThread(
              QStringLiteral("EncodeWorker"),
              [this](int status) { onStatusChanged(QPVEncoder::Status(status)); }))
    , m_worker(new OcelleEncodeWorker(this))
{
    if (m_codecManager)
        m_codecManager->prepare();
    qRegisterMetaType<QPVEncoder::Status>("QPVEncoder::Status");
    connect(
            m_worker, &OcelleEncodeWorker::statusChanged, this,
            [this](QPVEncoder::Status status) { m_workerThread->deliverStatus(status); },
            Qt::DirectConnection);
    connect(m_worker, &OcelleEncodeWorker::idle, this, &OcelleEncodeSession::onWorkerIdle,
            Qt::QueuedConnection);
    m_workerThread->start(m_worker);
}

OcelleEncodeSession::~OcelleEncodeSession()
{
    if (m_workerThread->isRunning())
        shutdown();
    delete m_control;
    delete m_workerThread;
    delete m_worker;
}

void OcelleEncodeSession::shutdown()
{
    {
        QMutexLocker locker(&m_settingsMutex);
        m_isShutDown = true;
        m_restart = Restart::None;
        m_worker->flush();
    }
    m_workerThread->quit();
    m_workerThread->waitServingEvents();
    m_listener->close(); // encoders that the platform still holds
    m_output.finishIfStarted();
}

QPVEncodeControl *OcelleEncodeSession::encodeControl() const
{
    return m_control;
}

QPVEncoder::Status OcelleEncodeSession::status() const
{
    return m_worker->status();
}

bool OcelleEncodeSession::encode(const QVideoFrame &frame)
{
    return m_worker->enqueue(frame);
}

QStringList OcelleEncodeSession::supportedCodecs(bool flag) const
{
    QStringList supported;
    for (const QString &codec : { QStringLiteral("video/h264"), QStringLiteral("video/h265"),
                                  QStringLiteral("video/vp8"), QStringLiteral("video/vp9") }) {
        if (m_codecManager &&
            m_codecManager->isEncoderSupported(OcelleEncoder::codecType(codec), flag))
            supported.append(codec);
    }
    return supported;
}

QList<qreal> OcelleEncodeSession::supportedFrameRates() const
{
    return { 30 };
}

QList<QSize> OcelleEncodeSession::supportedResolutions() const
{
    return { QSize(320, 240), QSize(640, 480), QSize(1280, 960) };
}

QList<QVideoFrame::PixelFormat> OcelleEncodeSession::supportedPixelFormats() const
{
    return { QVideoFrame::Format_YUV420P, QVideoFrame::Format_NV12, QVideoFrame::Format_BGRA32,
             QVideoFrame::Format_RGB32 };
}

QVideoEncoderSettings OcelleEncodeSession::videoSettings() const
{
    QMutexLocker locker(&m_settingsMutex);
    return m_settings;
}

void OcelleEncodeSession::setVideoSettings(const QVideoEncoderSettings &settings)
{
    bool restarts = false;
    {
        QMutexLocker locker(&m_settingsMutex);
        if (settings == m_settings)
            return;
        if (!m_worker->changeStartSettings(settings)) {
            m_worker->changeSettings(settings);
            restarts = m_worker->running() && isTurnedOtherwise(m_settings, settings);
            if (restarts) {
                m_restart = Restart::Stopping;
                m_worker->flush();
            }
        }
        m_settings = settings;
    }
    qCDebug(qLcEncode);
    if (restarts)
        qCDebug(qLcEncode) << "encoding options changed, restarting";
}

bool OcelleEncodeSession::startEncoder(const QVideoSurfaceFormat &format)
{
    qCDebug(qLcEncode) << "changing format to" << format;
    QVideoEncoderSettings settings;
    {
        QMutexLocker locker(&m_settingsMutex);
        m_format = format;
        m_settings.setResolution(format.frameSize());
        m_settings.setFrameRate(format.frameRate());
        settings = m_settings;
    }
    if (settings.isNull())
        return false;
    if (!m_output.accepts(settings)) {
        setError(QPVEncoder::FormatError,
                 QStringLiteral("videosink does not accept encoded video format"));
        return false;
    }
    Encoder encoder; // goes last: one that was not taken may call back, and a slot end the session
    return reportStart(acquireAndStart(false, &encoder));
}

void OcelleEncodeSession::stop()
{
    qCDebug(qLcEncode);
    QMutexLocker locker(&m_settingsMutex);
    m_restart = Restart::None;
    m_worker->flush();
}

/*! Gets \a encoder and gives it to the worker. A restart may have been called off meanwhile. */
OcelleEncodeSession::Start OcelleEncodeSession::acquireAndStart(bool restarts, Encoder *encoder)
{
    if (m_codecManager) {
        *encoder = m_codecManager->createVideoEncoder(
                OcelleEncoder::codecType(videoSettings().codec()), 0);
    }
    if (!*encoder)
        return Start::NoEncoder;
    (*encoder)->lockAndSetListener(m_listener);
    QMutexLocker locker(&m_settingsMutex);
    if (m_isShutDown || (restarts && m_restart != Restart::Starting))
        return Start::Cancelled;
    if (m_restart == Restart::Stopping) // this is the encoder that the restart would have got
        m_restart = Restart::Starting;
    return m_worker->start(std::move(*encoder), m_settings) ? Start::Done : Start::Refused;
}

/*! A slot may take the service down here. */
bool OcelleEncodeSession::reportStart(Start result)
{
    if (result == Start::NoEncoder)
        setError(QPVEncoder::ResourceError, QStringLiteral("Couldn't acquire encoder"));
    else if (result == Start::Refused)
        setError(QPVEncoder::EncoderError, QStringLiteral("Init error"));
    return result == Start::Done;
}

bool OcelleEncodeSession::addSink(QPVSink *sink)
{
    bool started = true;
    {
        QMutexLocker locker(m_output.mutex()); // no frame gets in before the start
        if (!m_output.attach(sink))
            return false;
        if (status() == QPVEncoder::ActiveStatus)
            started = m_output.start(videoSettings());
    }
    if (!started)
        setError(QPVEncoder::SinkError, QStringLiteral("Couldn't start videoSink"));
    return true;
}

bool OcelleEncodeSession::removeSink(QPVSink *sink)
{
    return m_output.detach(sink);
}

void OcelleEncodeSession::setError(QPVEncoder::Error error, const QString &text)
{
    if (error != QPVEncoder::NoError)
        qCCritical(qLcEncode) << error << text;
    emit m_control->error(error, text);
}

void OcelleEncodeSession::onEncodedFrame(unsigned char *data, unsigned long size,
                                         unsigned long timestamp, FrameType type)
{
    QPVEncodedVideoFrame::MetaData meta;
    meta.frameType = type == FrameType::Key ? QPVEncodedVideoFrame::KeyFrame
                                            : QPVEncodedVideoFrame::DeltaFrame;
    meta.timestamp = timestamp;
    m_output.deliver(QPVEncodedVideoFrame(reinterpret_cast<const char *>(data), size, meta),
                     m_control);
}

void OcelleEncodeSession::onEncoderParameterChanged(VideoEncoderParameter, const std::string &) {}

void OcelleEncodeSession::onEncoderError(const std::string &message)
{
    setError(QPVEncoder::EncoderError, QString::fromStdString(message));
}

void OcelleEncodeSession::onEncoderEOS()
{
    m_worker->eos();
    emit m_control->endOfStream();
}

void OcelleEncodeSession::onStatusChanged(QPVEncoder::Status status)
{
    const QPointer<OcelleEncodeSession> self(this); // a slot may take the service down
    if (status == QPVEncoder::StartingStatus)
        onEncoderStarting();
    else if (status == QPVEncoder::UnloadedStatus)
        onEncoderUnloaded();
    if (self)
        emit m_control->statusChanged(status);
}

void OcelleEncodeSession::onEncoderStarting()
{
    bool isRestarting;
    QVideoEncoderSettings settings;
    {
        QMutexLocker locker(&m_settingsMutex);
        isRestarting = m_restart != Restart::None;
        if (m_restart == Restart::Starting)
            m_restart = Restart::None;
        settings = m_settings;
    }
    // A sink that a restart has kept, until a stop called the restart off, ends with that run.
    if (!isRestarting && m_worker->running())
        m_output.finishIfStarted();
    if (!m_output.startIfNew(settings))
        qCCritical(qLcEncode) << "videosink does not start";
}

void OcelleEncodeSession::onEncoderUnloaded()
{
    Restart restart;
    {
        QMutexLocker locker(&m_settingsMutex);
        restart = m_restart;
        if (m_restart == Restart::Stopping)
            m_restart = Restart::Starting;
    }
    switch (restart) {
    case Restart::None:
        m_output.finish();
        break;
    case Restart::Stopping:
        finishRestartingEncoder();
        break;
    case Restart::Starting: // the next encoder is with the worker already
        break;
    }
}

void OcelleEncodeSession::finishRestartingEncoder()
{
    Encoder encoder; // goes last, as in startEncoder()
    const Start result = acquireAndStart(true, &encoder);
    if (result == Start::Refused)
        m_output.finish();
    reportStart(result);
}

/*! Finishes a sink that a restart has kept and that no status will finish any more. */
void OcelleEncodeSession::onWorkerIdle()
{
    {
        QMutexLocker locker(&m_settingsMutex);
        if (m_restart != Restart::None || m_worker->running())
            return;
    }
    if (status() == QPVEncoder::UnloadedStatus)
        m_output.finishIfStarted();
}
