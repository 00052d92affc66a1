// SPDX-License-Identifier: BSD-3-Clause
#include "encodingclient.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QMediaService>
#include <QMediaServiceProviderPlugin>
#include <QPluginLoader>
#include <QTimer>
#include <QVideoEncoderSettingsControl>
#include <QVideoSurfaceFormat>

#include <palaver/qpvencodedvideosourcecontrol.h>

namespace {

constexpr int Patience = 30000; // milliseconds
constexpr int RoomFor = 10;     // pictures that may wait: half of the queue

/*! Serves events until \a condition holds; looks every millisecond. */
template <typename Condition>
bool waitFor(const Condition &condition)
{
    if (condition())
        return true;
    const QDeadlineTimer deadline(Patience);
    QEventLoop loop;
    QTimer poll;
    bool holds = false;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        holds = condition();
        if (holds || deadline.hasExpired())
            loop.quit();
    });
    poll.start(1);
    loop.exec();
    return holds;
}

} // namespace

QMediaServiceProviderPlugin *EncodingClient::backend()
{
    QPluginLoader loader(QStringLiteral(OCELLE_BACKEND));
    loader.setLoadHints(QLibrary::PreventUnloadHint);
    return qobject_cast<QMediaServiceProviderPlugin *>(loader.instance());
}

EncodingClient::EncodingClient()
{
    if (!backend())
        return;
    service = backend()->create(QStringLiteral("veltra.palaver.encoder"));
    if (!service)
        return;
    control = service->requestControl<QPVEncodeControl *>();
    settings = service->requestControl<QVideoEncoderSettingsControl *>();
    source = service->requestControl<QPVEncodedVideoSourceControl *>();
    if (!isValid())
        return;
    source->addSink(&sink);
    connect(control, &QPVEncodeControl::statusChanged, this,
            [this](QPVEncoder::Status status) { statuses.append(status); });
    connect(
            control, &QPVEncodeControl::error, this,
            [this](QPVEncoder::Error, const QString &text) { errors.append(text); },
            Qt::QueuedConnection);
}

EncodingClient::~EncodingClient()
{
    if (service)
        backend()->release(service);
}

QVideoEncoderSettings EncodingClient::encoderSettings(const QString &codec, int bitRate)
{
    QVideoEncoderSettings wanted;
    wanted.setCodec(codec);
    wanted.setBitRate(bitRate);
    wanted.setEncodingMode(QMultimedia::ConstantBitRateEncoding);
    return wanted;
}

bool EncodingClient::start(const QVideoEncoderSettings &wanted, QSize size, double rate)
{
    settings->setVideoSettings(wanted);
    QVideoSurfaceFormat format(size, QVideoFrame::Format_YUV420P);
    format.setFrameRate(rate);
    return control->start(format) &&
           waitFor([this] { return control->status() >= QPVEncoder::StartingStatus; });
}

bool EncodingClient::encode(const QVideoFrame &frame)
{
    const auto isTaken = [this, &frame] {
        return m_accepted - sink.count() < RoomFor && control->encode(frame);
    };
    if (!waitFor(isTaken))
        return false;
    ++m_accepted;
    return true;
}

bool EncodingClient::waitForUnits()
{
    return waitFor([this] { return sink.count() == m_accepted || !errors.isEmpty(); }) &&
           sink.count() == m_accepted;
}

bool EncodingClient::stop()
{
    control->stop();
    const int stops = sink.calls().stops;
    const bool isStarted = sink.calls().starts > stops;
    control->stop();
    return waitFor([this, stops, isStarted] {
        return control->status() == QPVEncoder::UnloadedStatus &&
               (!isStarted || sink.calls().stops > stops);
    });
}
