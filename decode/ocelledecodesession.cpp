// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledecodesession.h"

#include "ocelledecodecontrol.h"
#include "ocelledecodelistener.h"
#include "ocelledecodelog.h"
#include "ocelledecodeworker.h"
#include "ocelleprovider.h"
#include "ocellevideooutput.h"

#include <QMutexLocker>
#include <QRect>
#include <QThread>

#include <palaver/qpvencodedvideoframe.h>

#include <cstdio>
#include <utility>

using Veltra::Ocelle::VideoDecoder;
using Veltra::Ocelle::VideoDecoderParameter;

namespace {

constexpr int ShutdownGrace = 500; // milliseconds

/*! The last of \a length pixels from \a start on; beyond the largest number it begins anew. */
int lastOf(int start, int length)
{
    return static_cast<int>(static_cast<unsigned int>(start) + static_cast<unsigned int>(length) -
                            1U);
}

/*! A library's thread may be the last to let it go, from within a signal. */
void deleteOnItsThread(OcelleDecodeControl *control)
{
    if (control->thread() == QThread::currentThread())
        delete control;
    else
        control->deleteLater();
}

} // namespace

OcelleDecodeSession::OcelleDecodeSession(OcelleProvider *provider, QObject *parent)
    : OcelleVideoSession(parent)
    , m_codecManager(provider->codecManager())
    , m_control(new OcelleDecodeControl(this), deleteOnItsThread)
    , m_listener(OcelleDecodeListener::create(this))
    , m_workerThread(new OcelleWorkerThread(QStringLiteral("DecodeWorker"),
                                            [this](int status) {
                                                if (!m_isDropped)
                                                    onStatusChanged(QPVDecoder::Status(status));
                                            }))
    , m_worker(new OcelleDecodeWorker(this))
{
    qRegisterMetaType<QPVDecoder::Status>("QPVDecoder::Status");
    connect(
            m_worker, &OcelleDecodeWorker::statusChanged, this,
            [this](QPVDecoder::Status status) { m_workerThread->deliverStatus(status); },
            Qt::DirectConnection);
    m_workerThread->start(m_worker);
}

OcelleDecodeSession::~OcelleDecodeSession()
{
    if (m_workerThread->isRunning())
        shutdown();
    m_shutdownTimer.reset();
    deleteControl();
    delete m_workerThread;
    delete m_worker;
}

/*!
 * A control whose error() a platform's thread is in goes when that returns.
 */
void OcelleDecodeSession::deleteControl()
{
    std::shared_ptr<OcelleDecodeControl> control;
    {
        QMutexLocker locker(&m_controlMutex);
        control.swap(m_control);
    }
    control->setParent(nullptr);
}

OcelleDecodeControl *OcelleDecodeSession::decodeControl() const
{
    return m_control.get();
}

QStringList OcelleDecodeSession::supportedCodecs(bool flag) const
{
    static const QStringList codecs { QStringLiteral("video/h264"), QStringLiteral("video/h265"),
                                      QStringLiteral("video/vp8"), QStringLiteral("video/vp9") };
    QStringList supported;
    for (const QString &codec : codecs) {
        if (m_codecManager &&
            m_codecManager->isDecoderSupported(OcelleDecoder::codecType(codec), flag))
            supported.append(codec);
    }
    return supported;
}

bool OcelleDecodeSession::isFormatSupported(const QVideoEncoderSettings &settings) const
{
    return m_codecManager && !settings.isNull() &&
           m_codecManager->isDecoderSupported(OcelleDecoder::codecType(settings.codec()), true);
}

QVideoEncoderSettings OcelleDecodeSession::codecSettings() const
{
    return m_settings;
}

bool OcelleDecodeSession::startDecoder(const QVideoEncoderSettings &settings)
{
    qCDebug(qLcDecode) << "Decoder settings" << settings.resolution() << settings.codec();
    if (m_worker->running()) {
        if (m_settings.codec() == settings.codec())
            return true;
        m_worker->flush();
    }
    m_settings = settings;
    if (m_settings.isNull())
        return false;

    std::shared_ptr<VideoDecoder> decoder;
    if (m_codecManager) {
        decoder =
                m_codecManager->createVideoDecoder(OcelleDecoder::codecType(m_settings.codec()), 0);
    }
    if (!decoder) {
        setError(QPVDecoder::ResourceError, QStringLiteral("Couldn't acquire decoder"));
        return false;
    }
    decoder->lockAndSetListener(m_listener);
    if (m_worker->start(std::move(decoder), m_settings))
        return true;
    setError(QPVDecoder::DecodeError, QStringLiteral("Init error"));
    return false;
}

bool OcelleDecodeSession::decode(const QPVEncodedVideoFrame &frame)
{
    if (!frame.isValid() || !m_worker->running())
        return false;
    if (m_worker->enqueue(frame))
        return true;
    qCWarning(qLcDecode) << "The decoder queue is full";
    return false;
}

void OcelleDecodeSession::flush()
{
    if (m_worker->running())
        m_worker->flush();
}

void OcelleDecodeSession::stop()
{
    flush();
}

void OcelleDecodeSession::drain()
{
    if (m_worker->running())
        m_worker->drain();
}

void OcelleDecodeSession::shutdown()
{
    m_worker->flush();
    m_workerThread->quit();
    m_shutdownTimer.reset(new QTimer(this));
    m_shutdownTimer->setSingleShot(true);
    m_shutdownTimer->setInterval(ShutdownGrace);
    connect(
            m_shutdownTimer.get(), &QTimer::timeout, this, [this] { dropUnfinishedDecoder(); },
            Qt::DirectConnection);
    m_shutdownTimer->start();
    m_workerThread->waitServingEvents();
    m_shutdownTimer->stop();
    m_listener->close(); // decoders that the platform still holds
}

QPVDecoder::Status OcelleDecodeSession::status() const
{
    return m_worker->status();
}

void OcelleDecodeSession::setError(QPVDecoder::Error error, const QString &text)
{
    tellError(sharedControl(), error, text);
}

std::shared_ptr<OcelleDecodeControl> OcelleDecodeSession::sharedControl() const
{
    QMutexLocker locker(&m_controlMutex);
    return m_control;
}

void OcelleDecodeSession::tellError(const std::shared_ptr<OcelleDecodeControl> &control,
                                    const std::string &message)
{
    tellError(control, QPVDecoder::DecodeError, QString::fromStdString(message));
}

void OcelleDecodeSession::tellError(const std::shared_ptr<OcelleDecodeControl> &control,
                                    QPVDecoder::Error error, const QString &text)
{
    if (error != QPVDecoder::NoError)
        qCCritical(qLcDecode) << error << text;
    if (control)
        emit control->error(error, text);
}

void OcelleDecodeSession::onDecodedYCbCrFrame(const Veltra::Ocelle::YCbCrFrame *frame)
{
    QMutexLocker locker(&m_mutex);
    if (m_videoOutput)
        m_videoOutput->onVideoFrame(frame);
}

void OcelleDecodeSession::onDecodedGraphicBuffer(
        std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer)
{
    QMutexLocker locker(&m_mutex);
    if (m_videoOutput)
        m_videoOutput->onGraphicBuffer(std::move(buffer));
}

void OcelleDecodeSession::onDecoderParameterChanged(VideoDecoderParameter parameter,
                                                    const std::string &value)
{
    if (parameter != VideoDecoderParameter::ViewportParameter)
        return;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    if (std::sscanf(value.c_str(), "(%d,%d,%d,%d)", &x, &y, &width, &height) < 4)
        return;
    QMutexLocker locker(&m_mutex);
    if (!m_videoOutput)
        return;
    qCDebug(qLcDecode) << "Changing viewport - " << x << y << width << height;
    m_videoOutput->setViewport(QRect(QPoint(x, y), QPoint(lastOf(x, width), lastOf(y, height))));
}

void OcelleDecodeSession::onDecoderError(const std::string &message)
{
    tellError(sharedControl(), message);
}

void OcelleDecodeSession::onDecoderEOS()
{
    stopVideoOutputNow();
    m_worker->eos();
}

void OcelleDecodeSession::onStatusChanged(QPVDecoder::Status status)
{
    if (status == QPVDecoder::UnloadedStatus) {
        QMutexLocker locker(&m_mutex);
        if (m_videoOutput)
            m_videoOutput->stop();
    }
    emit m_control->statusChanged(status);
}

void OcelleDecodeSession::dropUnfinishedDecoder()
{
    m_isDropped = true;
    m_worker->silence();
    m_worker->kill();
    onStatusChanged(QPVDecoder::UnloadedStatus);
}
