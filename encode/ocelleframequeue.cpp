// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleframequeue.h"

#include <utility>

int OcelleFrameQueue::size() const
{
    return static_cast<int>(m_frames.size() - m_first);
}

bool OcelleFrameQueue::isEmpty() const
{
    return m_first == m_frames.size();
}

void OcelleFrameQueue::append(const QVideoFrame &frame)
{
    // Full, and at least half of it taken: move down instead of growing.
    if (m_frames.size() == m_frames.capacity() && m_first > 0 && 2 * m_first >= m_frames.size()) {
        m_frames.erase(m_frames.begin(), m_frames.begin() + static_cast<std::ptrdiff_t>(m_first));
        m_first = 0;
    }
    m_frames.push_back(frame);
}

QVideoFrame OcelleFrameQueue::takeFirst()
{
    if (isEmpty())
        return m_none;
    const QVideoFrame frame = m_frames[m_first];
    m_frames[m_first] = m_none;
    if (++m_first == m_frames.size()) {
        m_frames.clear();
        m_first = 0;
    }
    return frame;
}

void OcelleFrameQueue::swap(OcelleFrameQueue &other)
{
    std::swap(m_frames, other.m_frames);
    std::swap(m_first, other.m_first);
}
