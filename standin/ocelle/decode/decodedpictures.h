// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "bufferpool.h"
#include "frameconverter.h"
#include "framepicture.h"

#include <memory>

namespace Veltra {
namespace Ocelle {

/*!
 * Makes pictures of what a decoder puts out. They lie in the decoder's own memory; only where that
 * has more bits, less subsampling or the like they are converted.
 *
 * Threads: one at a time; what it made is dropped anywhere and may outlive it.
 */
class DecodedPictures
{
public:
    DecodedPictures();

    /*! Takes the picture from \a frame; null where it cannot be converted. */
    std::shared_ptr<FramePicture> make(AVFrame *frame);

private:
    using Pool = BufferPool<FramePicture>;

    bool convert(const AVFrame &frame, FramePicture *picture);

    const std::shared_ptr<Pool> m_pool;
    FrameConverter m_converter;
};

} // namespace Ocelle
} // namespace Veltra
