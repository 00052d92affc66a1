// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "picturememory.h"

struct AVFrame;

namespace Veltra {
namespace Ocelle {

/*!
 * A picture of a BufferPool that lies in a decoder's own memory, or in memory of its own where it
 * had to be converted.
 *
 * Threads: written before it is handed out, read by anyone after.
 * Owner:   the pool. The decoder gets its memory back as soon as the picture is dropped.
 */
class FramePicture : public PictureMemory
{
public:
    FramePicture();
    ~FramePicture();
    FramePicture(const FramePicture &) = delete;
    FramePicture &operator=(const FramePicture &) = delete;

    /*! Whether \a frame can be handed on as it is in this format. */
    static bool isDirect(const AVFrame &frame, PixelFormat wanted);
    /*! Refers to the memory of \a frame, which is direct, and leaves that empty. */
    void take(AVFrame *frame);

    void release();

private:
    AVFrame *const m_frame; // owned; empty where the memory is its own
};

} // namespace Ocelle
} // namespace Veltra
