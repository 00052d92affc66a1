// SPDX-License-Identifier: BSD-3-Clause
#include "decoding.h"

#include "cameralist.h"

#include <QMediaService>
#include <QMediaServiceProviderPlugin>
#include <QVideoEncoderSettings>
#include <QVideoRendererControl>

#include <palaver/qpvdecodecontrol.h>
#include <palaver/qpvencodedvideoframe.h>

#include <chrono>

namespace Tool {
namespace {

constexpr int TickInterval = 200; // ms
constexpr int MaxIdleTicks = 50;  // without anything coming out at the end
constexpr int MostReordered = 24; // units after which a picture that did not come never does
constexpr int Forgiven = 10;      // units at a time, where none of those inside comes out

qint64 now()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

Decoding::Decoding(QMediaServiceProviderPlugin *backend, QAbstractVideoSurface *surface,
                   QObject *parent)
    : QObject(parent)
    , m_backend(backend)
    , m_service(backend->create(QStringLiteral("veltra.palaver.decoder")))
    , m_surface(surface)
{
    m_tick.setInterval(TickInterval);
    connect(&m_tick, &QTimer::timeout, this, &Decoding::onTick);
    if (!m_service)
        return;
    m_control = m_service->requestControl<QPVDecodeControl *>();
    m_renderer = m_service->requestControl<QVideoRendererControl *>();
    if (!m_control)
        return;
    connect(m_control, &QPVDecodeControl::statusChanged, this, &Decoding::onStatusChanged);
    connect(
            m_control, &QPVDecodeControl::error, this,
            [this](QPVDecoder::Error, const QString &text) { onError(text); },
            Qt::QueuedConnection);
}

Decoding::~Decoding()
{
    if (m_control)
        m_control->disconnect(this);
    if (m_renderer)
        m_renderer->setSurface(nullptr);
    if (m_service)
        m_backend->release(m_service);
}

QString Decoding::problem(VideoCodec codec) const
{
    if (!m_control || !m_renderer)
        return QStringLiteral("there is no decoder service");
    const QStringList supported = m_control->supportedCodecs(false);
    if (supported.contains(mimeType(codec)))
        return QString();
    QStringList names;
    for (const QString &name : codecNames()) {
        if (supported.contains(mimeType(*codecNamed(name))))
            names.append(name);
    }
    return names.isEmpty()
                   ? QStringLiteral("there is no decoder on this machine")
                   : QStringLiteral("there is no decoder for %1 on this machine, only for %2")
                             .arg(codecName(codec), joined(names));
}

bool Decoding::start(VideoCodec codec, QSize size, QString *error)
{
    m_renderer->setSurface(m_surface);
    QVideoEncoderSettings settings;
    settings.setCodec(mimeType(codec));
    settings.setResolution(size);
    if (m_control->start(settings)) {
        m_tick.start();
        return true;
    }
    *error = QStringLiteral("there is no decoder for %1 to be had").arg(codecName(codec));
    m_hasFailed = true;
    return false;
}

bool Decoding::decode(const StreamUnit &unit)
{
    if (!m_hasStarted || m_isEnding || m_hasFailed || m_inside.size() >= MostInside)
        return false;
    const auto type =
            unit.isKey ? QPVEncodedVideoFrame::KeyFrame : QPVEncodedVideoFrame::DeltaFrame;
    qint64 time = unit.time;
    while (m_inside.contains(time)) // a file that does not keep to the rules
        ++time;
    const QPVEncodedVideoFrame frame(unit.data.constData(), unsigned(unit.data.size()),
                                     { type, quint64(time) });
    const qint64 handedAt = now();
    if (!m_control->decode(frame))
        return false;
    m_counts.fields += unit.fields;
    // Of two fields the picture has the time of either.
    if (unit.fields == 2 || (unit.fields == 1 && m_counts.fields % 2 == 1))
        m_inside.insert(time, { m_counts.units, handedAt });
    ++m_counts.units;
    ++m_progress;
    return true;
}

void Decoding::onPicture(qint64 time)
{
    ++m_counts.pictures;
    ++m_progress;
    const auto found = m_inside.constFind(time);
    if (found == m_inside.constEnd())
        return;
    const Unit unit = *found;
    m_inside.erase(found);
    m_counts.times.add(now() - unit.handedAt);
    forget(unit.index - MostReordered);
}

/*! Units whose pictures never came and will not come any more. */
void Decoding::forget(qint64 beforeIndex)
{
    for (auto unit = m_inside.begin(); unit != m_inside.end();) {
        if (unit->index < beforeIndex)
            unit = m_inside.erase(unit);
        else
            ++unit;
    }
}

void Decoding::drain()
{
    end(&QPVDecodeControl::drain);
}

void Decoding::stop()
{
    end(&QPVDecodeControl::stop);
}

void Decoding::end(void (QPVDecodeControl::*ending)())
{
    if (m_isEnding)
        return;
    m_isEnding = true;
    m_idleTicks = 0;
    if (m_control && m_hasStarted)
        (m_control->*ending)();
    else
        QMetaObject::invokeMethod(this, &Decoding::announceEnd, Qt::QueuedConnection);
}

void Decoding::announceEnd()
{
    m_tick.stop();
    if (!std::exchange(m_hasEnded, true))
        emit ended();
}

void Decoding::onStatusChanged(QPVDecoder::Status status)
{
    if (status == QPVDecoder::StartingStatus) {
        m_hasStarted = true;
        emit started();
    }
    // The surface's last pictures have come; nothing is done from within the control's own signal.
    if (status == QPVDecoder::UnloadedStatus && m_isEnding)
        QMetaObject::invokeMethod(this, &Decoding::announceEnd, Qt::QueuedConnection);
}

void Decoding::onError(const QString &text)
{
    if (m_hasStarted) {
        ++m_counts.damages;
        emit damaged(text);
        return;
    }
    if (std::exchange(m_hasFailed, true))
        return;
    emit failed(text);
    stop();
}

/*!
 * Where no picture comes, none may ever make room: of as many as may be inside some never come out,
 * as the decoder waits for a key frame, say, or it is the service's queue that was full, which also
 * counts the units that show nothing.
 */
void Decoding::onTick()
{
    const bool isIdle = m_progress == std::exchange(m_progressAtTick, m_progress);
    m_idleTicks = isIdle ? m_idleTicks + 1 : 0;
    if (isIdle && m_hasStarted && !m_isEnding) {
        qint64 oldest = m_counts.units;
        for (const Unit &unit : qAsConst(m_inside))
            oldest = qMin(oldest, unit.index);
        if (m_inside.size() >= MostInside)
            forget(oldest + Forgiven);
        emit roomWasMade();
    }
    if (m_isEnding && m_idleTicks >= MaxIdleTicks && !std::exchange(m_hasFailed, true)) {
        emit failed(QStringLiteral("the decoder does not end"));
        announceEnd();
    }
}

} // namespace Tool
