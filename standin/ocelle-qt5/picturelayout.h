// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "framepool.h"

#include <QVideoFrame>

#include <memory>

namespace Veltra {
namespace Ocelle {

/*!
 * A buffer of \a pool with planes laid out for a picture of \a width by \a height pixels in
 * \a format, one of presentableAs() and with its planes in Qt's order; null if the pool has none or
 * the picture is too large for Qt's frames (2 GiB).
 */
std::shared_ptr<PooledFrame> acquirePicture(FramePool &pool, QVideoFrame::PixelFormat format,
                                            int width, int height);

} // namespace Ocelle
} // namespace Veltra
