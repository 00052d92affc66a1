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

class SurfacePresenter;

/*!
 * Where pictures are left for the presenter on the surface's thread, and how it is woken.
 *
 * However many pictures come, at most one wake-up event is under way: the presenter takes one
 * picture, presents it, and finish() wakes it again if there is more.
 *
 * Threads: grouped below. The mutex is held for a few lines and while an event is posted, which is
 *          what keeps the presenter from being destroyed in between; never while calling out.
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

    enum class Outcome { Nothing, Presented, Refused, Dropped };

    struct Task
    {
        bool current = false; // false: nothing to do, and no finish()
        bool stopSurface = false;
        bool present = false; // picture is valid
        quint64 epoch = 0;    // for isStale()
        QStringList reports;
        Picture picture;
    };

    // Any thread
    void deliver(std::shared_ptr<GraphicBuffer> buffer);   // not null
    void deliverCopy(std::shared_ptr<GraphicBuffer> copy); // has no sequence number
    void drop();                                           // a picture for which there was no room
    void reject(Trouble trouble, const QString &text);     // a picture that cannot be shown
    void setMirrored(bool mirrored);
    void setViewport(const QRect &viewport);
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
    Task take(SurfacePresenter *presenter);
    void finish(SurfacePresenter *presenter, Outcome outcome);
    bool claimReport(Trouble trouble); // true the first time
    bool isStale(const Task &task) const;
    bool forget(SurfacePresenter *presenter); // it is being destroyed; true if it was current

private:
    void enqueue(std::shared_ptr<GraphicBuffer> &&buffer, Picture &dropped);
    void countSequence(quint64 sequence);
    void wake();
    void reset();

    mutable std::mutex m_mutex; // guards all below
    SurfacePresenter *m_presenter = nullptr;
    bool m_wakeUpPending = false; // an event is under way, or finish() will be called
    bool m_stopRequested = false;
    PictureQueue m_queue;
    QRect m_viewport;
    bool m_mirrored = false;
    bool m_sequenceKnown = false;
    quint64 m_lastSequence = 0;
    unsigned m_reported = 0; // set of Trouble
    QStringList m_reports;   // still to be logged by the presenter
    VideoOutputStatistics m_statistics;

    std::atomic<quint64> m_epoch { 0 }; // pictures taken in an earlier one are stale
};

} // namespace Ocelle
} // namespace Veltra
