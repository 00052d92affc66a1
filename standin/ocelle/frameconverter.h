// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "picturememory.h"

struct AVFrame;
struct SwsContext;

namespace Veltra {
namespace Ocelle {

/*!
 * Brings decoded pictures to a given size and format: 8-bit 4:2:0 by libyuv, anything else (more
 * bits, less subsampling, RGB, upside down) by libswscale.
 *
 * Threads: one at a time.
 * Errors:  false for what neither of them converts.
 */
class FrameConverter
{
public:
    FrameConverter() = default;
    ~FrameConverter();
    FrameConverter(const FrameConverter &) = delete;
    FrameConverter &operator=(const FrameConverter &) = delete;

    /*! Fills \a picture, whose memory is allocated, with all of \a frame. */
    bool convert(const AVFrame &frame, PictureMemory &picture);

private:
    bool scale(const AVFrame &frame, PictureMemory &picture);
    bool convertAny(const AVFrame &frame, PictureMemory &picture);

    SwsContext *m_context = nullptr; // owned; made when first needed
};

} // namespace Ocelle
} // namespace Veltra
