// SPDX-License-Identifier: BSD-3-Clause
#include "picturequeue.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

bool PictureQueue::push(Picture &&picture, std::shared_ptr<GraphicBuffer> &dropped)
{
    int victim = -1;
    if (m_count > 0) {
        if (picture.buffer->live)
            victim = waitingLive();
        if (victim < 0 && m_count == Capacity)
            victim = 0;
        if (victim >= 0)
            dropped = drop(victim);
    }
    picture.isBehindEnd = std::exchange(m_hasEnd, false);
    at(m_count++) = std::move(picture);
    return victim >= 0;
}

bool PictureQueue::end(std::shared_ptr<GraphicBuffer> &dropped)
{
    const int live = waitingLive();
    if (live >= 0)
        dropped = drop(live);
    m_hasEnd = true;
    return live >= 0;
}

/*! Index of the live picture, of which there is at most one; -1 if there is none. */
int PictureQueue::waitingLive()
{
    for (int i = m_count - 1; i >= 0; --i) {
        if (at(i).buffer->live)
            return i;
    }
    return -1;
}

/*! Takes a picture out that nobody gets to see. */
std::shared_ptr<GraphicBuffer> PictureQueue::drop(int index)
{
    Picture taken = takeAt(index);
    if (taken.isBehindEnd)
        (index < m_count ? at(index).isBehindEnd : m_hasEnd) = true;
    return std::move(taken.buffer);
}

Picture PictureQueue::takeAt(int index)
{
    if (index == 0)
        return takeFirst();
    Picture taken = std::move(at(index));
    for (int i = index + 1; i < m_count; ++i)
        at(i - 1) = std::move(at(i));
    --m_count;
    return taken;
}

} // namespace Ocelle
} // namespace Veltra
