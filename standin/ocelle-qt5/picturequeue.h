// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <QRect>

#include <array>
#include <memory>
#include <utility>

namespace Veltra {
namespace Ocelle {

/*! A picture on its way to a surface, with the settings of the moment it was delivered. */
struct Picture
{
    std::shared_ptr<GraphicBuffer> buffer;
    QRect viewport; // pixels; null for the whole picture
    bool mirrored = false;
    bool isBehindEnd = false; // the surface is stopped before it
};

/*!
 * Pictures that wait for their surface, oldest first, in memory of fixed size, and where they end.
 *
 * Of live pictures only the newest waits. Beyond Capacity the oldest picture goes. An end stays in
 * its place whichever pictures go.
 *
 * Threads: none of its own; the user locks.
 */
class PictureQueue
{
public:
    static constexpr int Capacity = 32; // pictures

    bool isEmpty() const { return m_count == 0; }
    int size() const { return m_count; }

    /*!
     * Appends \a picture. If another has to go for it, that one moves to \a dropped, so that the
     * caller can release it without a lock; true then.
     */
    bool push(Picture &&picture, std::shared_ptr<GraphicBuffer> &dropped);

    /*!
     * Exchanges the only waiting picture, if it is live, for \a picture, which is live as well; false
     * if something else waits. This is all that a consumer which is behind costs.
     */
    bool exchangeLive(std::shared_ptr<GraphicBuffer> &picture, const QRect &viewport, bool mirrored)
    {
        Picture &waiting = m_slots[m_first];
        if (m_count != 1 || !waiting.buffer->live)
            return false;
        waiting.buffer.swap(picture);
        waiting.viewport = viewport;
        waiting.mirrored = mirrored;
        return true;
    }

    /*! Moves the oldest picture out; the queue must not be empty. */
    Picture takeFirst()
    {
        Picture first = std::move(at(0));
        m_first = (m_first + 1) % Capacity;
        --m_count;
        return first;
    }

    /*! Ends what waits. A live picture does not wait for that: it moves to \a dropped; true then. */
    bool end(std::shared_ptr<GraphicBuffer> &dropped);
    bool hasEnd() const { return m_hasEnd; } // behind all pictures
    void takeEnd() { m_hasEnd = false; }

private:
    Picture &at(int index) { return m_slots[(m_first + unsigned(index)) % Capacity]; }
    int waitingLive();
    std::shared_ptr<GraphicBuffer> drop(int index);
    Picture takeAt(int index);

    std::array<Picture, Capacity> m_slots;
    unsigned m_first = 0; // slot of the oldest picture
    int m_count = 0;
    bool m_hasEnd = false;
};

} // namespace Ocelle
} // namespace Veltra
