// SPDX-License-Identifier: BSD-3-Clause
#include "decodingclient.h"

#include "encodingclient.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QMediaService>
#include <QMediaServiceProviderPlugin>
#include <QTimer>
#include <QVideoEncoderSettings>
#include <QVideoRendererControl>

#include <palaver/qpvencodedvideoframe.h>

namespace {

constexpr int Patience = 30000;   // milliseconds
constexpr int HiddenAfter = 1000; // milliseconds after which one of those inside shows nothing
constexpr int RoomFor = 20;       // units, as many as the service's queue takes
constexpr int LookAgain = 50;     // milliseconds, where no event comes

/*! Serves events until \a condition holds, without a pause in between: an event makes it hold. */
template <typename Condition>
bool waitFor(Condition condition, int milliseconds = Patience)
{
    const QDeadlineTimer deadline(milliseconds);
    QTimer wakeUp;
    wakeUp.start(LookAgain);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace

DecodingClient::DecodingClient()
{
    QMediaServiceProviderPlugin *const backend = EncodingClient::backend();
    if (!backend)
        return;
    service = backend->create(QStringLiteral("veltra.palaver.decoder"));
    if (!service)
        return;
    control = service->requestControl<QPVDecodeControl *>();
    renderer = service->requestControl<QVideoRendererControl *>();
    if (!isValid())
        return;
    renderer->setSurface(&surface);
    connect(control, &QPVDecodeControl::statusChanged, this,
            [this](QPVDecoder::Status status) { statuses.append(status); });
    connect(
            control, &QPVDecodeControl::error, this,
            [this](QPVDecoder::Error, const QString &text) { errors.append(text); },
            Qt::QueuedConnection);
}

DecodingClient::~DecodingClient()
{
    if (service)
        EncodingClient::backend()->release(service);
}

bool DecodingClient::start(const QString &codec, QSize size)
{
    QVideoEncoderSettings settings;
    settings.setCodec(codec);
    settings.setResolution(size);
    return control->start(settings) &&
           waitFor([this] { return control->status() >= QPVDecoder::StartingStatus; });
}

bool DecodingClient::decode(const QByteArray &unit, qint64 time, bool isKey)
{
    const auto hasRoom = [this] { return m_accepted - m_forgiven - surface.presented < RoomFor; };
    if (!hasRoom() && !waitFor(hasRoom, HiddenAfter))
        ++m_forgiven;
    const auto type = isKey ? QPVEncodedVideoFrame::KeyFrame : QPVEncodedVideoFrame::DeltaFrame;
    const QPVEncodedVideoFrame frame(unit.constData(), unsigned(unit.size()),
                                     { type, quint64(time) });
    if (!control->decode(frame))
        return false;
    ++m_accepted;
    return true;
}

bool DecodingClient::waitForPictures()
{
    return waitFor([this] { return surface.presented >= m_accepted || !errors.isEmpty(); }) &&
           surface.presented == m_accepted;
}

bool DecodingClient::drain()
{
    control->drain();
    return waitFor([this] { return statuses.last() == QPVDecoder::UnloadedStatus; });
}

bool DecodingClient::stop()
{
    control->stop();
    return waitFor([this] { return statuses.last() == QPVDecoder::UnloadedStatus; });
}
