#include "picturememory.h"

#include <new>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::size_t Alignment = 64; // bytes, a cache line and the widest vector register

std::int32_t aligned(std::int32_t bytes)
{
    constexpr std::int32_t mask = Alignment - 1;
    return (bytes + mask) & ~mask;
}

} // namespace

bool PictureMemory::allocate(std::int32_t pictureWidth, std::int32_t pictureHeight,
                             PixelFormat pictureFormat)
{
    if (m_memory && width == pictureWidth && height == pictureHeight && format == pictureFormat)
        return false;
    const bool interleaved = pictureFormat == PixelFormat::NV12;
    const std::int32_t chromaWidth = (pictureWidth + 1) / 2;
    const std::int32_t chromaHeight = (pictureHeight + 1) / 2;
    const std::int32_t strides[3] = { aligned(pictureWidth),
                                      aligned(interleaved ? chromaWidth * 2 : chromaWidth),
                                      aligned(chromaWidth) };
    const std::int32_t heights[3] = { pictureHeight, chromaHeight, chromaHeight };

    width = pictureWidth;
    height = pictureHeight;
    format = pictureFormat;
    planeCount = interleaved ? 2 : 3;
    std::size_t size = 0;
    for (std::int32_t i = 0; i < planeCount; ++i)
        size += std::size_t(strides[i]) * std::size_t(heights[i]);
    m_memory.reset(static_cast<std::uint8_t *>(std::aligned_alloc(Alignment, size)));
    if (!m_memory)
        throw std::bad_alloc();

    std::uint8_t *next = m_memory.get();
    for (std::size_t i = 0; i < std::size_t(planeCount); ++i) {
        m_planes[i] = { next, strides[i] };
        planes[i] = { next, strides[i], heights[i] };
        next += std::size_t(strides[i]) * std::size_t(heights[i]);
    }
    return true;
}

} // namespace Ocelle
} // namespace Veltra
