// SPDX-License-Identifier: BSD-3-Clause
#include "presenterwaker.h"

#include "surfacepresenter.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <utility>

namespace Veltra {
namespace Ocelle {

std::shared_ptr<PresenterWaker> PresenterWaker::ofCurrentThread()
{
    thread_local std::weak_ptr<PresenterWaker> known;
    std::shared_ptr<PresenterWaker> waker = known.lock();
    if (!waker) {
        waker.reset(new PresenterWaker);
        known = waker;
    }
    return waker;
}

PresenterWaker::~PresenterWaker()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_posted.wait(lock, [this] { return m_posting == 0; });
}

void PresenterWaker::post()
{
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (--m_posting == 0)
        m_posted.notify_all(); // with the mutex held, or it could be gone
}

bool PresenterWaker::add(SurfacePresenter *presenter)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.push_back(presenter);
    if (std::exchange(m_eventPending, true))
        return false;
    ++m_posting;
    return true;
}

bool PresenterWaker::forget(SurfacePresenter *presenter)
{
    bool waited = false;
    for (std::size_t i = m_next; i < m_serving.size(); ++i) {
        if (m_serving[i] == presenter) {
            m_serving[i] = nullptr;
            waited = true;
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto last = std::remove(m_waiting.begin(), m_waiting.end(), presenter);
    waited = waited || last != m_waiting.end();
    m_waiting.erase(last, m_waiting.end());
    return waited;
}

const QVideoFrame *PresenterWaker::sharedFrame(const GraphicBuffer *picture,
                                               QVideoFrame::PixelFormat format) const
{
    return picture == m_sharedPicture && m_sharedFrame->pixelFormat() == format ? &*m_sharedFrame
                                                                                : nullptr;
}

void PresenterWaker::share(const GraphicBuffer *picture, const QVideoFrame &frame)
{
    if (m_next >= m_serving.size()) // nobody comes after
        return;
    m_sharedPicture = picture;
    m_sharedFrame.emplace(frame);
}

/*!
 * Serves those who wait now; a presenter that is woken meanwhile waits for the next event. Where that
 * is served in an event loop inside a call to a surface, it takes over the rest of this one's.
 */
void PresenterWaker::customEvent(QEvent *)
{
    // What a presenter leads to may destroy others, and this with the last of them.
    const std::shared_ptr<PresenterWaker> self = shared_from_this();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_eventPending = false;
        m_serving.insert(m_serving.end(), m_waiting.begin(), m_waiting.end());
        m_waiting.clear();
    }
    while (m_next < m_serving.size()) {
        if (SurfacePresenter *const presenter = m_serving[m_next++])
            presenter->work();
    }
    m_serving.clear();
    m_next = 0;
    m_sharedPicture = nullptr;
    m_sharedFrame.reset();
}

} // namespace Ocelle
} // namespace Veltra
