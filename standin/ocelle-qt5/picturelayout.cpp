// SPDX-License-Identifier: BSD-3-Clause
#include "picturelayout.h"

#include <array>
#include <limits>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr qint64 LineAlignment = 64; // bytes; chroma lines of planar layouts are half of it

struct PlaneLayout
{
    qint64 stride; // bytes
    qint64 lines;
};

struct Layout
{
    std::array<PlaneLayout, 3> planes;
    std::size_t count;
};

Layout layoutOf(QVideoFrame::PixelFormat format, qint64 width, qint64 height)
{
    const auto aligned = [](qint64 bytes) {
        return (bytes + LineAlignment - 1) / LineAlignment * LineAlignment;
    };
    const qint64 chromaLines = (height + 1) / 2;
    const qint64 stride = aligned(width);
    switch (format) {
    case QVideoFrame::Format_RGB32:
        return { { { { aligned(width * 4), height } } }, 1 };
    case QVideoFrame::Format_NV12:
    case QVideoFrame::Format_NV21:
        return { { { { stride, height }, { stride, chromaLines } } }, 2 };
    default:
        return {
            { { { stride, height }, { stride / 2, chromaLines }, { stride / 2, chromaLines } } }, 3
        };
    }
}

} // namespace

std::shared_ptr<PooledFrame> acquirePicture(FramePool &pool, QVideoFrame::PixelFormat format,
                                            int width, int height)
{
    const Layout layout = layoutOf(format, width, height);
    qint64 bytes = 0;
    for (std::size_t i = 0; i < layout.count; ++i) {
        if (layout.planes[i].stride > std::numeric_limits<int>::max() / layout.planes[i].lines)
            return nullptr;
        bytes += layout.planes[i].stride * layout.planes[i].lines;
    }
    if (bytes > std::numeric_limits<int>::max())
        return nullptr;
    auto buffer = pool.acquire(std::size_t(bytes));
    if (!buffer)
        return nullptr;
    buffer->width = width;
    buffer->height = height;
    buffer->planeCount = std::int32_t(layout.count);
    const std::uint8_t *data = buffer->memory;
    for (std::size_t i = 0; i < layout.count; ++i) {
        const PlaneLayout &plane = layout.planes[i];
        buffer->planes[i] = { data, std::int32_t(plane.stride), std::int32_t(plane.lines) };
        data += plane.stride * plane.lines;
    }
    return buffer;
}

} // namespace Ocelle
} // namespace Veltra
