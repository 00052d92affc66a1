// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>
#include <QVideoFrame>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace Veltra {
namespace Ocelle {

class GraphicBuffer;
class SurfacePresenter;

/*!
 * Wakes the presenters of one thread: one event for all that have something to do, since posting one
 * and serving it is most of what a picture costs. Presenters that are woken together and show the
 * same picture share its QVideoFrame, too.
 *
 * Threads: grouped below; lives on the thread that it serves.
 * Owner:   shared by that thread's presenters, and by their mailboxes for as long as one of these
 *          has it; destroyed on that thread.
 */
class PresenterWaker : public QObject, public std::enable_shared_from_this<PresenterWaker>
{
    Q_OBJECT
public:
    /*! The calling thread's; made when there is none yet. */
    static std::shared_ptr<PresenterWaker> ofCurrentThread();
    ~PresenterWaker() override; // waits for the end of a post(), which is at hand

    // Any thread that keeps the presenter from being destroyed meanwhile
    /*! True where post() has to follow; until then the waker is not destroyed. */
    bool add(SurfacePresenter *presenter);

    // Any thread, after add()
    /*!
     * Call it with no lock held: the woken thread is often there before the call returns, and would
     * wait for that lock.
     */
    void post();

    // The thread that it serves
    bool forget(SurfacePresenter *presenter); // true if it was to be woken
    /*! The frame made for \a picture by another presenter that was woken with it; null for none. */
    const QVideoFrame *sharedFrame(const GraphicBuffer *picture,
                                   QVideoFrame::PixelFormat format) const;
    void share(const GraphicBuffer *picture, const QVideoFrame &frame);

protected:
    void customEvent(QEvent *event) override;

private:
    PresenterWaker() = default;

    std::mutex m_mutex; // guards the next three; never held across a call out
    std::vector<SurfacePresenter *> m_waiting; // in the order of their calls
    bool m_eventPending = false;
    int m_posting = 0; // threads in post(), or on their way to it
    std::condition_variable m_posted;

    // The thread that it serves
    std::vector<SurfacePresenter *> m_serving; // null where forgotten
    std::size_t m_next = 0;                    // the next of them
    const GraphicBuffer *m_sharedPicture = nullptr;
    std::optional<QVideoFrame> m_sharedFrame; // of that picture, which it keeps alive
};

} // namespace Ocelle
} // namespace Veltra
