// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "framepool.h"

#include <QVideoFrame>

#include <memory>

namespace Veltra {
namespace Ocelle {

/*!
 * Turns pictures into layouts that their surface takes, in pooled memory.
 *
 * Threads: the surface's.
 * Errors:  null when the surface holds on to all converted pictures, or there is no memory.
 */
class PictureConverter
{
public:
    static constexpr int MaxInUse = 8; // pictures that a surface may keep

    PictureConverter();

    /*! \a picture, whole and of a known layout, as \a target, one of presentableAs() it. */
    std::shared_ptr<const GraphicBuffer> convert(const GraphicBuffer &picture,
                                                 QVideoFrame::PixelFormat target);

private:
    std::shared_ptr<FramePool> m_pool;
};

} // namespace Ocelle
} // namespace Veltra
