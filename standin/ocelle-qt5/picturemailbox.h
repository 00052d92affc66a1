// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "picturequeue.h"
#include "videooutputstatistics.h"

#include <QRect>
#include <QStringList>

#include <atomic>
#include <memory>
#include <mutex>

namespace Veltra {
namespace Ocelle {

class PresenterWaker;
class SurfacePresenter;

/*!
 * Where pictures are left for the presenter on the surface's thread, and how it is woken.
 *
 * However many pictures come, the presenter is woken once: it takes what waits, one by one, and
 * has itself woken again if there is still more. It is woken together with the other presenters of its
 * thread; where one of these holds that up, it gets an event of its own.
 *
 * Threads: grouped below. The mutex is held for a few lines; while it posts an event only to a
 *          presenter itself, which it then keeps from being destroyed. The waker's comes after it.
 * Owner:   shared by the output and its presenters, of which only the current one is served.
 */
class PictureMailbox
{
public:
    /*! Why pictures are dropped; each is reported once, until stop() or another surface. */
    enum class Trouble : unsigned {
        BadPicture = 1 << 0,
        UnknownFormat = 1 << 1,
    };

    struct Task
    {
        bool current = false; // false: nothing to do any more
        bool stopSurface = false;
        bool present = false; // picture is valid
        bool more = false;    // wakeAgain() after this one
        quint64 epoch = 0;    // for isStale(), of its kind of picture
        QStringList reports;
        Picture picture;
    };

    // Any thread
    void deliver(std::shared_ptr<GraphicBuffer> &&buffer); // not null
    void deliverCopy(std::shared_ptr<GraphicBuffer> copy); // has no sequence number
    void drop();                                           // a picture for which there was no room
    void reject(Trouble trouble, const QString &text);     // a picture that cannot be shown
    void setMirrored(bool mirrored);
    void setViewport(const QRect &viewport);
    /*! Drops a live picture that waits; others are shown before the surface is stopped. */
    void stop();
    VideoOutputStatistics statistics() const;

    // The output's thread
    void attach(SurfacePresenter *presenter);
    /*!
     * No picture delivered before reaches the presenter from now on. Returns it if it lives on the
     * calling thread, which has to retire it then; else it retires itself by an event.
     */
    SurfacePresenter *detach();

    // The presenter's thread
    /*! From now on it is woken by \a waker, which is its thread's; null for by its own events. */
    void useWaker(SurfacePresenter *presenter, std::shared_ptr<PresenterWaker> waker);
    Task take(SurfacePresenter *presenter);
    void wakeAgain(SurfacePresenter *presenter); // there is more, or was when it could not work
    bool claimReport(Trouble trouble);           // true the first time
    bool isStale(const Task &task) const;
    bool forget(SurfacePresenter *presenter); // it is being destroyed; true if it was current

private:
    const std::atomic<quint64> &epochOf(const Task &task) const;
    void enqueue(std::shared_ptr<GraphicBuffer> &buffer, std::unique_lock<std::mutex> &lock);
    void countSequence(quint64 sequence);
    void wake(std::unique_lock<std::mutex> &lock);
    void wakeByItself();
    void reset();

    mutable std::mutex m_mutex; // guards all below
    SurfacePresenter *m_presenter = nullptr;
    std::shared_ptr<PresenterWaker> m_waker; // null until the presenter is on the surface's thread
    bool m_wakeUpPending = false;            // it has been woken and has not taken anything since
    bool m_overdue = false;                  // and by itself, because it took nothing for long
    quint64 m_exchanged = 0; // live pictures delivered in place of one that was dropped
    quint64 m_overdueAt = 0; // of these, since it was woken
    PictureQueue m_queue;
    QRect m_viewport;
    bool m_mirrored = false;
    bool m_sequenceKnown = false;
    quint64 m_lastSequence = 0;
    unsigned m_reported = 0; // set of Trouble
    QStringList m_reports;   // still to be logged by the presenter
    VideoOutputStatistics m_statistics;

    // Pictures taken in an earlier one are stale. One of live pictures ends when it is stopped.
    std::atomic<quint64> m_epoch { 0 };
    std::atomic<quint64> m_liveEpoch { 0 };
};

} // namespace Ocelle
} // namespace Veltra
