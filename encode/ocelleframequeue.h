// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QVideoFrame>

#include <vector>

/*!
 * Pictures in a row, oldest first. Once it has reached its usual length, neither putting one in nor
 * taking one out asks for memory.
 *
 * Threads: any, one at a time.
 */
class OcelleFrameQueue
{
public:
    int size() const;
    bool isEmpty() const;

    void append(const QVideoFrame &frame);
    /*! The oldest one, an invalid one where there is none. */
    QVideoFrame takeFirst();
    void swap(OcelleFrameQueue &other);

private:
    std::vector<QVideoFrame> m_frames; // those before m_first are taken
    std::size_t m_first = 0;
    QVideoFrame m_none; // stands in for a taken one; making an invalid frame costs memory, too
};
