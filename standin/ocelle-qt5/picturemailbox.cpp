// SPDX-License-Identifier: BSD-3-Clause
#include "picturemailbox.h"

#include "presenterwaker.h"
#include "surfacepresenter.h"

#include <QCoreApplication>
#include <QThread>

#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr quint64 OverdueAfter = 16; // pictures; half a second at 30 a second

} // namespace

void PictureMailbox::deliver(std::shared_ptr<GraphicBuffer> &&buffer)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const quint64 sequence = buffer->sequence;
    if (m_wakeUpPending && buffer->live && m_queue.exchangeLive(buffer, m_viewport, m_mirrored)) {
        countSequence(sequence);
        if (++m_exchanged == m_overdueAt)
            wakeByItself();
    } else if (m_presenter) {
        countSequence(sequence);
        enqueue(buffer, lock);
    }
}

void PictureMailbox::deliverCopy(std::shared_ptr<GraphicBuffer> copy)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_presenter)
        enqueue(copy, lock);
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
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_presenter)
        return;
    ++m_statistics.delivered;
    ++m_statistics.dropped;
    if (m_reported & unsigned(trouble))
        return;
    m_reported |= unsigned(trouble);
    m_reports.append(text);
    wake(lock);
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
    std::shared_ptr<GraphicBuffer> dropped;
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_presenter)
        return;
    if (m_queue.end(dropped))
        ++m_statistics.dropped;
    m_sequenceKnown = false;
    m_reported = 0;
    ++m_liveEpoch;
    wake(lock);
}

VideoOutputStatistics PictureMailbox::statistics() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    VideoOutputStatistics statistics = m_statistics;
    statistics.delivered += m_exchanged;
    statistics.dropped += m_exchanged;
    if (m_presenter)
        m_presenter->addOutcomes(statistics);
    return statistics;
}

void PictureMailbox::attach(SurfacePresenter *presenter)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_presenter = presenter;
    m_waker = presenter->waker();
    m_statistics = VideoOutputStatistics();
    m_exchanged = 0;
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

void PictureMailbox::useWaker(SurfacePresenter *presenter, std::shared_ptr<PresenterWaker> waker)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (presenter == m_presenter)
        m_waker.swap(waker);
}

PictureMailbox::Task PictureMailbox::take(SurfacePresenter *presenter)
{
    Task task;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (presenter != m_presenter)
        return task;
    task.current = true;
    m_overdue = false;
    if (!m_reports.isEmpty())
        task.reports.swap(m_reports);
    if (m_queue.isEmpty()) {
        task.stopSurface = m_queue.hasEnd();
        m_queue.takeEnd();
    } else {
        task.present = true;
        task.picture = m_queue.takeFirst();
        task.stopSurface = task.picture.isBehindEnd;
        task.epoch = epochOf(task).load(std::memory_order_relaxed);
        task.more = !m_queue.isEmpty() || m_queue.hasEnd();
    }
    m_wakeUpPending = task.more; // it comes back by itself
    return task;
}

void PictureMailbox::wakeAgain(SurfacePresenter *presenter)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (presenter != m_presenter)
        return;
    m_wakeUpPending = false;
    wake(lock);
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
    return epochOf(task).load(std::memory_order_acquire) != task.epoch;
}

const std::atomic<quint64> &PictureMailbox::epochOf(const Task &task) const
{
    return task.picture.buffer->live ? m_liveEpoch : m_epoch;
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

/*! Leaves in \a buffer what had to go for it, to be released without the lock. Ends with wake(). */
void PictureMailbox::enqueue(std::shared_ptr<GraphicBuffer> &buffer,
                             std::unique_lock<std::mutex> &lock)
{
    ++m_statistics.delivered;
    std::shared_ptr<GraphicBuffer> dropped;
    if (m_queue.push(Picture { std::move(buffer), m_viewport, m_mirrored }, dropped)) {
        ++m_statistics.dropped;
        wakeByItself();
    }
    buffer.swap(dropped);
    wake(lock);
}

/*! A number below the last one means that the source began anew. */
void PictureMailbox::countSequence(quint64 sequence)
{
    if (m_sequenceKnown && sequence != m_lastSequence + 1) {
        if (sequence > m_lastSequence)
            m_statistics.missing += sequence - m_lastSequence - 1;
        else if (sequence == m_lastSequence && sequence != 0)
            ++m_statistics.duplicated;
    }
    m_sequenceKnown = true;
    m_lastSequence = sequence;
}

/*! Comes last: where it wakes the thread it releases \a lock first. */
void PictureMailbox::wake(std::unique_lock<std::mutex> &lock)
{
    if (m_wakeUpPending)
        return;
    m_wakeUpPending = true;
    m_overdueAt = m_exchanged + OverdueAfter;
    if (!m_waker) {
        m_presenter->postWork();
    } else if (m_waker->add(m_presenter)) {
        PresenterWaker *const waker = m_waker.get(); // which waits for post() if it is to go
        lock.unlock();
        waker->post();
    }
}

/*!
 * A surface that runs an event loop of its own while it is shown a picture would hold up the others
 * of its thread, which are woken with it: one that is not served for long is woken by itself, once.
 */
void PictureMailbox::wakeByItself()
{
    if (!std::exchange(m_overdue, true))
        m_presenter->postWork();
}

void PictureMailbox::reset()
{
    m_presenter = nullptr;
    m_waker.reset();
    m_wakeUpPending = false;
    m_overdue = false;
    m_sequenceKnown = false;
    m_reported = 0;
    m_reports.clear();
    ++m_epoch;
    ++m_liveEpoch;
}

} // namespace Ocelle
} // namespace Veltra
