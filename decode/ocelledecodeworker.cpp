// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledecodeworker.h"

#include "ocelledebug.h"
#include "ocelledecodelog.h"
#include "ocelledecodesession.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMetaObject>
#include <QMutexLocker>

#include <utility>

namespace {

const QEvent::Type FramesWaiting = QEvent::User; // 1000

} // namespace

OcelleDecodeWorker::OcelleDecodeWorker(OcelleDecodeSession *session)
    : m_decoder(this)
    , m_session(session)
{
    connect(&m_decoder, &OcelleDecoder::statusChanged, this, &OcelleDecodeWorker::onStatusChanged,
            Qt::DirectConnection);
}

OcelleDecodeWorker::~OcelleDecodeWorker() = default;

bool OcelleDecodeWorker::start(std::shared_ptr<Veltra::Ocelle::VideoDecoder> decoder,
                               const QVideoEncoderSettings &settings)
{
    {
        QMutexLocker locker(&m_mutex);
        m_pendingDecoder.swap(decoder); // one that waits still goes with no lock held
        m_settings = settings;
        m_applied = false;
        m_requested = true;
    }
    // Once to end what runs, once to start. Had the worker looked in between, a decoder that does
    // not start would now stay loaded and now be let go.
    queueApplyState();
    queueApplyState();
    return true;
}

bool OcelleDecodeWorker::enqueue(const QPVEncodedVideoFrame &frame)
{
    QMutexLocker locker(&m_mutex);
    if (queued() >= m_depth || m_flushing)
        return false;
    m_queue.push_back(frame);
    if (queued() == 1)
        QCoreApplication::postEvent(this, new QEvent(FramesWaiting));
    return true;
}

void OcelleDecodeWorker::flush()
{
    changeRequest(false, true);
}

void OcelleDecodeWorker::drain()
{
    requestState(false);
}

void OcelleDecodeWorker::kill()
{
    {
        QMutexLocker locker(&m_mutex);
        m_flushing = true;
    }
    m_decoder.kill();
}

void OcelleDecodeWorker::silence()
{
    m_silenced = true;
}

void OcelleDecodeWorker::eos()
{
    qCWarning(qLcDecode) << "EOS is not handled yet.";
}

bool OcelleDecodeWorker::running() const
{
    QMutexLocker locker(&m_mutex);
    return m_requested;
}

QPVDecoder::Status OcelleDecodeWorker::status() const
{
    return m_decoder.status();
}

int OcelleDecodeWorker::depth() const
{
    QMutexLocker locker(&m_mutex);
    return m_depth;
}

void OcelleDecodeWorker::setDepth(int depth)
{
    QMutexLocker locker(&m_mutex);
    m_depth = depth;
}

int OcelleDecodeWorker::threshold() const
{
    QMutexLocker locker(&m_mutex);
    return m_threshold;
}

void OcelleDecodeWorker::setThreshold(int threshold)
{
    int room;
    {
        QMutexLocker locker(&m_mutex);
        m_threshold = threshold;
        if (m_threshold <= queued())
            return;
        room = m_depth - queued();
    }
    emitNeedData(room);
}

void OcelleDecodeWorker::requestState(bool run)
{
    changeRequest(run, false);
}

void OcelleDecodeWorker::start()
{
    Launch taken;
    {
        QMutexLocker locker(&m_mutex);
        taken = takeLaunch();
    }
    launch(std::move(taken));
}

void OcelleDecodeWorker::stop()
{
    Queue discarded; // goes with no lock held
    bool discard;
    {
        QMutexLocker locker(&m_mutex);
        discard = m_flushing;
        if (discard)
            discarded.swap(m_queue);
        m_flushing = false;
    }
    if (discard) {
        m_decoder.flush();
    } else {
        decode();
        m_decoder.drain();
    }
}

void OcelleDecodeWorker::decode()
{
    for (;;) {
        QPVEncodedVideoFrame frame;
        if (!takeFrame(&frame))
            return;
        if (!m_decoder.decode(frame)) {
            m_session->setError(QPVDecoder::DecodeError, QStringLiteral("Decoder error"));
            qCWarning(qLcDecode) << "The decoder rejected the frame" << frame;
        }
    }
}

/*!
 * Takes the oldest frame, unless there is none or all are to be discarded; asks for more where there
 * are few left now.
 */
bool OcelleDecodeWorker::takeFrame(QPVEncodedVideoFrame *frame)
{
    int room;
    {
        QMutexLocker locker(&m_mutex);
        if (m_queue.empty() || m_flushing)
            return false;
        const int before = queued();
        *frame = m_queue.front();
        m_queue.pop_front();
        if (before < m_threshold || queued() >= m_threshold)
            return true;
        room = m_depth - queued();
    }
    emitNeedData(room);
    return true;
}

/*! With the mutex held. */
int OcelleDecodeWorker::queued() const
{
    return static_cast<int>(m_queue.size());
}

QPVEncodedVideoFrame OcelleDecodeWorker::dequeue()
{
    QMutexLocker locker(&m_mutex);
    if (m_queue.empty())
        return {};
    const QPVEncodedVideoFrame frame = m_queue.front();
    m_queue.pop_front();
    return frame;
}

bool OcelleDecodeWorker::event(QEvent *event)
{
    if (event->type() != FramesWaiting)
        return QObject::event(event);
    decode();
    return true;
}

void OcelleDecodeWorker::onStatusChanged(QPVDecoder::Status status)
{
    const bool unloaded = status == QPVDecoder::UnloadedStatus;
    const bool active = status == QPVDecoder::StartingStatus || status == QPVDecoder::ActiveStatus;
    if (unloaded || active) {
        {
            QMutexLocker locker(&m_mutex);
            m_active = active;
        }
        queueApplyState();
    }
    if (!m_silenced)
        emit statusChanged(status);
}

void OcelleDecodeWorker::applyState()
{
    assertOnOwnThread(this);
    bool wanted;
    Launch taken;
    {
        QMutexLocker locker(&m_mutex);
        const bool unwanted = m_active && !m_applied;
        wanted = !unwanted && !m_active && m_requested;
        if (!unwanted && !wanted)
            return;
        if (wanted) {
            m_applied = true;
            taken = takeLaunch();
        }
    }
    if (wanted)
        launch(std::move(taken));
    else
        stop();
}

/*! With the mutex held, so that a flush that comes after stays a flush. */
OcelleDecodeWorker::Launch OcelleDecodeWorker::takeLaunch()
{
    Launch launch;
    if (m_flushing)
        launch.discarded.swap(m_queue); // of the stream before, flushed before it came to start
    m_flushing = false;
    launch.decoder.swap(m_pendingDecoder);
    launch.settings = m_settings;
    return launch;
}

void OcelleDecodeWorker::launch(Launch launch)
{
    const bool starts = m_decoder.load(launch.decoder) && m_decoder.start(launch.settings);
    launch.decoder.reset(); // one that was not taken goes before anybody is told
    if (starts)
        QCoreApplication::postEvent(this, new QEvent(FramesWaiting));
    else
        m_session->setError(QPVDecoder::DecodeError, QStringLiteral("Decoder error"));
}

void OcelleDecodeWorker::changeRequest(bool run, bool discard)
{
    {
        QMutexLocker locker(&m_mutex);
        if (discard)
            m_flushing = true;
        if (!run)
            m_applied = false;
        m_requested = run;
    }
    queueApplyState();
}

void OcelleDecodeWorker::queueApplyState()
{
    QMetaObject::invokeMethod(this, "applyState", Qt::QueuedConnection);
}

/*! \a room is below zero where the depth was made less than what waits. */
void OcelleDecodeWorker::emitNeedData(int room)
{
    if (!m_silenced)
        emit needData(static_cast<unsigned int>(qMax(0, room)));
}
