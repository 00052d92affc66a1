// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "framepool.h"
#include "picturequeue.h"

#include <ocelle/frames.h>

#include <memory>

namespace Veltra {
namespace Ocelle {

/*!
 * Copies frames, which are only lent, into pictures that last.
 *
 * Interleaved chroma stays interleaved; what is neither planar nor interleaved becomes planar.
 *
 * Threads: any.
 * Errors:  copy() returns null when all its pictures are out, or there is no memory.
 */
class FrameCopier
{
public:
    // As many as may wait, and what a surface may keep besides.
    static constexpr int MaxInUse = PictureQueue::Capacity + 8; // pictures

    FrameCopier();

    /*! Whether \a frame has samples, lines that hold its width, and no absurd size. */
    static bool isWhole(const YCbCrFrame &frame);

    /*! \a frame must be whole. The picture is not live. */
    std::shared_ptr<GraphicBuffer> copy(const YCbCrFrame &frame);

private:
    std::shared_ptr<FramePool> m_pool;
};

} // namespace Ocelle
} // namespace Veltra
