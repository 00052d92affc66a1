// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodeworker.h"

#include "ocelledebug.h"
#include "ocelledecodelog.h"
#include "ocelleencodesession.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QMutexLocker>
#include <QVideoFrame>

#include <ocelle/videoencoder.h>

#include <utility>

namespace {

constexpr auto FramesWaiting = static_cast<QEvent::Type>(1000); // event of the queue

} // namespace

OcelleEncodeWorker::ChangeSettingsEvent::ChangeSettingsEvent(const QVideoEncoderSettings &settings,
                                                             quint32 run)
    : QEvent(EventType)
    , m_settings(settings)
    , m_run(run)
{
}

OcelleEncodeWorker::OcelleEncodeWorker(OcelleEncodeSession *session)
    : m_encoder(this)
    , m_session(session)
{
    connect(&m_encoder, &OcelleEncoder::statusChanged, this, &OcelleEncodeWorker::onStatusChanged);
}

OcelleEncodeWorker::~OcelleEncodeWorker() = default;

bool OcelleEncodeWorker::start(std::shared_ptr<Veltra::Ocelle::VideoEncoder> encoder,
                               const QVideoEncoderSettings &settings)
{
    {
        QMutexLocker locker(&m_mutex);
        setRequested(false);
        if (m_pendingEncoder)
            m_unused.encoders.push_back(std::move(m_pendingEncoder));
        m_pendingEncoder = std::move(encoder);
        m_pendingSettings = settings;
        m_isStartWaiting = true;
        setRequested(true);
    }
    postApplyState(); // stops
    postApplyState(); // starts
    return true;
}

bool OcelleEncodeWorker::changeStartSettings(const QVideoEncoderSettings &settings)
{
    QMutexLocker locker(&m_mutex);
    if (m_isStartWaiting) {
        // The encoder is of the codec that it was asked for.
        const QString codec = m_pendingSettings.codec();
        m_pendingSettings = settings;
        m_pendingSettings.setCodec(codec);
        return true;
    }
    if (m_isLoading && m_isApplied) {
        const QString codec = m_settings.codec();
        m_settings = settings;
        m_settings.setCodec(codec);
        return true;
    }
    return false;
}

bool OcelleEncodeWorker::changeSettings(const QVideoEncoderSettings &settings)
{
    quint32 run;
    {
        QMutexLocker locker(&m_mutex);
        if (!m_isActive || !m_isApplied) // one that is being stopped needs none
            return true;
        m_settings = settings;
        run = m_run;
    }
    QCoreApplication::postEvent(this, new ChangeSettingsEvent(settings, run));
    return true;
}

bool OcelleEncodeWorker::enqueue(const QVideoFrame &frame)
{
    {
        QMutexLocker locker(&m_mutex);
        if (m_queue.size() >= m_depth || m_isFlushing)
            return false;
        m_queue.append(frame);
        if (m_queue.size() > 1)
            return true;
        ++m_passesPosted;
    }
    QCoreApplication::postEvent(this, new QEvent(FramesWaiting));
    return true;
}

void OcelleEncodeWorker::flush()
{
    {
        QMutexLocker locker(&m_mutex);
        m_isFlushing = true;
        if (!m_queue.isEmpty())
            m_queue.swap(m_unused.frames); // empty: nothing is queued again before they have gone
        setRequested(false);
    }
    postApplyState();
}

void OcelleEncodeWorker::drain()
{
    requestState(false);
}

void OcelleEncodeWorker::eos() {}

void OcelleEncodeWorker::requestState(bool run)
{
    {
        QMutexLocker locker(&m_mutex);
        setRequested(run);
    }
    postApplyState();
}

bool OcelleEncodeWorker::running() const
{
    QMutexLocker locker(&m_mutex);
    return m_isRequested;
}

QPVEncoder::Status OcelleEncodeWorker::status() const
{
    return m_encoder.status();
}

int OcelleEncodeWorker::depth() const
{
    QMutexLocker locker(&m_mutex);
    return m_depth;
}

void OcelleEncodeWorker::setDepth(int depth)
{
    QMutexLocker locker(&m_mutex);
    m_depth = depth;
}

int OcelleEncodeWorker::threshold() const
{
    QMutexLocker locker(&m_mutex);
    return m_threshold;
}

void OcelleEncodeWorker::setThreshold(int threshold)
{
    int room;
    {
        QMutexLocker locker(&m_mutex);
        m_threshold = threshold;
        if (m_threshold <= m_queue.size())
            return;
        room = qMax(0, m_depth - m_queue.size());
    }
    emit needData(static_cast<unsigned int>(room));
}

void OcelleEncodeWorker::onStatusChanged(QPVEncoder::Status status)
{
    if (status == QPVEncoder::UnloadedStatus || status >= QPVEncoder::StartingStatus) {
        {
            QMutexLocker locker(&m_mutex);
            m_isActive = status != QPVEncoder::UnloadedStatus;
        }
        postApplyState();
    }
    emit statusChanged(status);
}

void OcelleEncodeWorker::applyState()
{
    assertOnOwnThread(this);
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> encoder;
    const Step step = nextStep(&encoder);
    switch (step) {
    case Step::None:
        break;
    case Step::Idle:
        emit idle();
        break;
    case Step::Stop:
        stop();
        break;
    case Step::Start:
        start(std::move(encoder));
        break;
    }
}

/*! Also hands out the encoder to start, and lets what is not used any more go. */
OcelleEncodeWorker::Step
OcelleEncodeWorker::nextStep(std::shared_ptr<Veltra::Ocelle::VideoEncoder> *encoder)
{
    Unused unused; // goes with no lock held
    QMutexLocker locker(&m_mutex);
    std::swap(unused, m_unused);
    if (m_isActive)
        return m_isApplied ? Step::None : Step::Stop;
    if (m_isRequested && !m_isApplied) {
        m_isApplied = true;
        m_isFlushing = false;
        m_isStartWaiting = false;
        m_isLoading = true;
        ++m_run;
        m_settings = m_pendingSettings;
        encoder->swap(m_pendingEncoder);
        return Step::Start;
    }
    if (m_isRequested) // the start has failed
        return Step::None;
    if (m_pendingEncoder)
        unused.encoders.push_back(std::move(m_pendingEncoder));
    return Step::Idle;
}

void OcelleEncodeWorker::start(std::shared_ptr<Veltra::Ocelle::VideoEncoder> encoder)
{
    const bool loaded = m_encoder.load(std::move(encoder));
    QVideoEncoderSettings settings;
    {
        // From here on changed settings come by event, behind this.
        QMutexLocker locker(&m_mutex);
        m_isLoading = false;
        m_isActive = loaded;
        settings = m_settings;
    }
    if (loaded && m_encoder.start(settings))
        encode();
    else
        reportEncoderError();
}

void OcelleEncodeWorker::stop()
{
    if (!isFlushing())
        encodeQueued();
    if (isFlushing())
        m_encoder.flush();
    else
        m_encoder.drain();
    postIfFramesWait();
}

void OcelleEncodeWorker::encode()
{
    encodeQueued();
    postIfFramesWait();
}

/*!
 * Frames that come in meanwhile wait for the next pass: as long as they keep coming, changed
 * settings and requests would not get their turn.
 */
void OcelleEncodeWorker::encodeQueued()
{
    assertOnOwnThread(this);
    for (int left = queued(); left > 0; --left) {
        QVideoFrame frame(m_noFrame); // goes at the end of each round
        if (!takeFrame(&frame))
            return;
        if (m_encoder.status() <= QPVEncoder::StoppingStatus) {
            qCWarning(qLcDecode) << "Dropping frame" << frame; // there, as its readers expect
        } else if (!m_encoder.encode(frame)) {
            reportEncoderError();
            qCWarning(qLcDecode) << "The encoder rejected the frame" << frame;
        }
    }
}

/*! False where there is none, or none to be encoded any more. Tells when more could come. */
bool OcelleEncodeWorker::takeFrame(QVideoFrame *frame)
{
    int room;
    {
        QMutexLocker locker(&m_mutex);
        if (m_queue.isEmpty() || m_isFlushing)
            return false;
        const int before = m_queue.size();
        *frame = m_queue.takeFirst();
        if (before < m_threshold || m_queue.size() >= m_threshold)
            return true;
        room = qMax(0, m_depth - m_queue.size());
    }
    emit needData(static_cast<unsigned int>(room));
    return true;
}

bool OcelleEncodeWorker::event(QEvent *event)
{
    if (event->type() == FramesWaiting) {
        {
            QMutexLocker locker(&m_mutex);
            m_passesPosted = qMax(0, m_passesPosted - 1);
        }
        encode();
        return true;
    }
    if (event->type() == ChangeSettingsEvent::EventType) {
        changeSettings(*static_cast<ChangeSettingsEvent *>(event));
        return true;
    }
    return QObject::event(event);
}

/*! An applyState() that was queued earlier may have stopped the encoder, and started the next. */
void OcelleEncodeWorker::changeSettings(const ChangeSettingsEvent &event)
{
    if (event.run() != 0 && isOver(event.run()))
        return;
    if (!m_encoder.changeSettings(event.settings()))
        reportEncoderError();
}

bool OcelleEncodeWorker::isOver(quint32 run) const
{
    QMutexLocker locker(&m_mutex);
    return run != m_run || !m_isActive;
}

int OcelleEncodeWorker::queued() const
{
    QMutexLocker locker(&m_mutex);
    return m_queue.size();
}

/*! For frames that came while others were taken, so that none of them posted an event. */
void OcelleEncodeWorker::postIfFramesWait()
{
    {
        QMutexLocker locker(&m_mutex);
        if (m_queue.isEmpty() || m_passesPosted > 0)
            return;
        ++m_passesPosted;
    }
    QCoreApplication::postEvent(this, new QEvent(FramesWaiting));
}

bool OcelleEncodeWorker::isFlushing() const
{
    QMutexLocker locker(&m_mutex);
    return m_isFlushing;
}

/*! With the mutex held. */
void OcelleEncodeWorker::setRequested(bool run)
{
    m_isRequested = run;
    if (!run) {
        m_isApplied = false;
        m_isStartWaiting = false;
    }
}

void OcelleEncodeWorker::postApplyState()
{
    QMetaObject::invokeMethod(this, "applyState", Qt::QueuedConnection);
}

void OcelleEncodeWorker::reportEncoderError()
{
    m_session->setError(QPVEncoder::EncoderError, QStringLiteral("Encoder error"));
}
