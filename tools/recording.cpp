// SPDX-License-Identifier: BSD-3-Clause
#include "recording.h"

#include "cameralist.h"

#include <QMediaService>
#include <QMediaServiceProviderPlugin>
#include <QVideoEncoderSettingsControl>
#include <QVideoSurfaceFormat>

#include <palaver/qpvencodecontrol.h>
#include <palaver/qpvencodedvideosourcecontrol.h>

namespace Tool {
namespace {

constexpr int Patience = 10000; // ms without a unit at the end

QVideoEncoderSettings encoderSettings(const RecordingSettings &recording)
{
    QVideoEncoderSettings settings;
    settings.setCodec(mimeType(recording.codec));
    settings.setBitRate(recording.bitRate);
    settings.setEncodingMode(QMultimedia::ConstantBitRateEncoding);
    settings.setEncodingOption(QStringLiteral("rotate"), recording.rotation);
    settings.setEncodingOption(QStringLiteral("mirrorV"), recording.mirrored);
    return settings;
}

VideoFileWriter::Format fileFormat(const RecordingSettings &recording)
{
    const bool isTurned = recording.rotation % 180 != 0;
    return { recording.codec, isTurned ? recording.size.transposed() : recording.size,
             recording.rate, recording.timeScale };
}

} // namespace

Recording::Recording(QMediaServiceProviderPlugin *backend, QObject *parent)
    : QObject(parent)
    , m_backend(backend)
    , m_service(backend->create(QStringLiteral("veltra.palaver.encoder")))
{
    m_stalled.setSingleShot(true);
    m_stalled.setInterval(Patience);
    connect(&m_stalled, &QTimer::timeout, this, &Recording::onStalled);
    connect(&m_sink, &FileSink::unitWritten, this, &Recording::onUnitWritten, Qt::QueuedConnection);
    connect(&m_sink, &FileSink::failed, this, &Recording::fail, Qt::QueuedConnection);
    if (!m_service)
        return;
    m_control = m_service->requestControl<QPVEncodeControl *>();
    m_settings = m_service->requestControl<QVideoEncoderSettingsControl *>();
    m_source = m_service->requestControl<QPVEncodedVideoSourceControl *>();
    if (!m_control)
        return;
    connect(m_control, &QPVEncodeControl::statusChanged, this, &Recording::onStatusChanged);
    connect(m_control, &QPVEncodeControl::encodedVideoFrame, this, &Recording::unitEncoded,
            Qt::QueuedConnection);
    // The library's own words come before the back end's.
    connect(
            m_control, &QPVEncodeControl::error, this,
            [this](QPVEncoder::Error, const QString &text) { fail(text); }, Qt::QueuedConnection);
}

Recording::~Recording()
{
    if (m_source)
        m_source->removeSink(&m_sink);
    if (m_service)
        m_backend->release(m_service);
}

QString Recording::problem(VideoCodec codec) const
{
    if (!m_control || !m_settings || !m_source)
        return QStringLiteral("there is no encoder service");
    const QStringList supported = m_control->supportedCodecs(false);
    if (supported.contains(mimeType(codec)))
        return QString();
    QStringList names;
    for (const QString &name : codecNames()) {
        if (supported.contains(mimeType(*codecNamed(name))))
            names.append(name);
    }
    return names.isEmpty()
                   ? QStringLiteral("there is no encoder on this machine")
                   : QStringLiteral("there is no encoder for %1 on this machine, only for %2")
                             .arg(codecName(codec), joined(names));
}

bool Recording::start(const RecordingSettings &settings, QString *error)
{
    if (!m_writer.open(settings.file, fileFormat(settings), settings.replace, error))
        return false;
    m_source->addSink(&m_sink);
    m_settings->setVideoSettings(encoderSettings(settings));
    QVideoSurfaceFormat format(settings.size, QVideoFrame::Format_NV12);
    format.setFrameRate(settings.rate);
    m_isStarted = true;
    if (m_control->start(format))
        return true;
    QString ignored; // nothing is in the file yet
    m_writer.close(&ignored);
    *error = QStringLiteral("there is no encoder for %1 to be had").arg(codecName(settings.codec));
    m_isStarted = false;
    m_hasFailed = true;
    return false;
}

bool Recording::encode(const QVideoFrame &frame)
{
    if (m_isEnding || m_hasFailed)
        return false;
    const bool isAccepted = m_control->encode(frame);
    ++(isAccepted ? m_accepted : m_refused);
    return isAccepted;
}

void Recording::end()
{
    if (m_isEnding)
        return;
    m_isEnding = true;
    m_stalled.start();
    stopIfDone();
}

/*!
 * Stopping drops what is queued, so it has to wait for the last unit. And for the encoder to start:
 * a stop that overtakes the start leaves nothing that could tell of its end.
 */
void Recording::stopIfDone()
{
    if (!m_isEnding || m_isStopping || (waiting() > 0 && !m_hasFailed))
        return;
    if (m_isStarted && !m_isReady && !m_hasFailed)
        return;
    m_isStopping = true;
    if (m_isStarted)
        m_control->stop();
    if (!m_isStarted || m_control->status() == QPVEncoder::UnloadedStatus)
        QMetaObject::invokeMethod(this, &Recording::onStopped, Qt::QueuedConnection);
}

void Recording::onStopped()
{
    if (m_hasEnded)
        return;
    m_hasEnded = true;
    m_isStarted = false;
    m_stalled.stop();
    emit ended();
}

bool Recording::close(QString *error)
{
    if (m_isStuck) // its thread may still be writing; the trouble was told
        return false;
    return m_writer.close(error);
}

void Recording::onStatusChanged(QPVEncoder::Status status)
{
    if (status == QPVEncoder::StartingStatus) {
        m_isReady = true;
        if (!m_isEnding)
            emit started();
        stopIfDone();
    }
    if (status == QPVEncoder::UnloadedStatus && m_isEnding)
        onStopped();
}

void Recording::onUnitWritten()
{
    if (m_stalled.isActive())
        m_stalled.start();
    emit unitWritten();
    stopIfDone();
}

void Recording::onStalled()
{
    if (m_isStopping) {
        fail(QStringLiteral("the encoder does not stop"));
        m_isStuck = true;
        onStopped();
        return;
    }
    m_stalled.start(); // for the stop
    if (m_isReady)
        fail(QStringLiteral("the encoder has kept the last %1 pictures").arg(waiting()));
    else
        fail(QStringLiteral("the encoder does not start"));
}

void Recording::fail(const QString &error)
{
    if (m_hasFailed)
        return;
    m_hasFailed = true;
    emit failed(error);
    stopIfDone();
}

} // namespace Tool
