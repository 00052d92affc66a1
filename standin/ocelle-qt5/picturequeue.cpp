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
            dropped = takeAt(victim).buffer;
    }
    at(m_count++) = std::move(picture);
    return victim >= 0;
}

Picture PictureQueue::takeFirst()
{
    Picture first = std::move(at(0));
    m_first = (m_first + 1) % Capacity;
    --m_count;
    return first;
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
