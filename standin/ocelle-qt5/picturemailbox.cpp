#include "picturemailbox.h"

#include "surfacepresenter.h"

#include <QCoreApplication>
#include <QThread>

#include <utility>

namespace Veltra {
namespace Ocelle {

void PictureMailbox::deliver(std::shared_ptr<GraphicBuffer> buffer)
{
    Picture dropped; // released after the lock: its memory goes back to somebody else's pool
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_presenter)
        return;
    countSequence(buffer->sequence);
    enqueue(std::move(buffer), dropped);
}

void PictureMailbox::deliverCopy(std::shared_ptr<GraphicBuffer> copy)
{
    Picture dropped;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_presenter)
        enqueue(std::move(copy), dropped);
}

void PictureMailbox::drop()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_presenter)
        return;
    ++m_statistics.delivered;
    ++m_statistics.dropped;
}

void PictureMailbox::reject(Trouble trouble, const QString &text)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_presenter)
        return;
    ++m_statistics.delivered;
    ++m_statistics.dropped;
    if (m_reported & unsigned(trouble))
        return;
    m_reported |= unsigned(trouble);
    m_reports.append(text);
    wake();
}

void PictureMailbox::setMirrored(bool mirrored)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_mirrored = mirrored;
}

void PictureMailbox::setViewport(const QRect &viewport)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_viewport = viewport;
}

void PictureMailbox::stop()
{
    PictureQueue dropped;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_presenter)
        return;
    std::swap(dropped, m_queue);
    m_statistics.dropped += quint64(dropped.size());
    m_sequenceKnown = false;
    m_reported = 0;
    m_stopRequested = true;
    ++m_epoch;
    wake();
}

VideoOutputStatistics PictureMailbox::statistics() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_statistics;
}

void PictureMailbox::attach(SurfacePresenter *presenter)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_presenter = presenter;
    m_statistics = VideoOutputStatistics();
    presenter->postAttach();
}

SurfacePresenter *PictureMailbox::detach()
{
    PictureQueue dropped;
    std::lock_guard<std::mutex> lock(m_mutex);
    std::swap(dropped, m_queue);
    SurfacePresenter *const presenter = m_presenter;
    reset();
    if (!presenter || presenter->thread() == QThread::currentThread())
        return presenter;
    presenter->postRetire();
    return nullptr;
}

PictureMailbox::Task PictureMailbox::take(SurfacePresenter *presenter)
{
    Task task;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (presenter != m_presenter)
        return task;
    task.current = true;
    task.epoch = m_epoch.load(std::memory_order_relaxed);
    task.stopSurface = std::exchange(m_stopRequested, false);
    if (!m_reports.isEmpty())
        task.reports.swap(m_reports);
    if (!m_queue.isEmpty()) {
        task.present = true;
        task.picture = m_queue.takeFirst();
    }
    return task;
}

void PictureMailbox::finish(SurfacePresenter *presenter, Outcome outcome)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (presenter != m_presenter)
        return;
    switch (outcome) {
    case Outcome::Nothing:
        break;
    case Outcome::Presented:
        ++m_statistics.presented;
        break;
    case Outcome::Refused:
        ++m_statistics.refused;
        break;
    case Outcome::Dropped:
        ++m_statistics.dropped;
        break;
    }
    m_wakeUpPending = false;
    if (!m_queue.isEmpty() || m_stopRequested || !m_reports.isEmpty())
        wake();
}

bool PictureMailbox::claimReport(Trouble trouble)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const bool first = !(m_reported & unsigned(trouble));
    m_reported |= unsigned(trouble);
    return first;
}

bool PictureMailbox::isStale(const Task &task) const
{
    return m_epoch.load(std::memory_order_acquire) != task.epoch;
}

bool PictureMailbox::forget(SurfacePresenter *presenter)
{
    PictureQueue dropped;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (presenter != m_presenter)
        return false;
    std::swap(dropped, m_queue);
    reset();
    return true;
}

void PictureMailbox::enqueue(std::shared_ptr<GraphicBuffer> &&buffer, Picture &dropped)
{
    ++m_statistics.delivered;
    if (m_queue.push(Picture { std::move(buffer), m_viewport, m_mirrored }, dropped))
        ++m_statistics.dropped;
    wake();
}

/*! A number below the last one means that the source began anew. */
void PictureMailbox::countSequence(quint64 sequence)
{
    if (m_sequenceKnown) {
        if (sequence > m_lastSequence)
            m_statistics.missing += sequence - m_lastSequence - 1;
        else if (sequence == m_lastSequence && sequence != 0)
            ++m_statistics.duplicated;
    }
    m_sequenceKnown = true;
    m_lastSequence = sequence;
}

void PictureMailbox::wake()
{
    if (m_wakeUpPending)
        return;
    m_wakeUpPending = true;
    m_presenter->postWork();
}

void PictureMailbox::reset()
{
    m_presenter = nullptr;
    m_wakeUpPending = false;
    m_stopRequested = false;
    m_sequenceKnown = false;
    m_reported = 0;
    m_reports.clear();
    ++m_epoch;
}

} // namespace Ocelle
} // namespace Veltra
