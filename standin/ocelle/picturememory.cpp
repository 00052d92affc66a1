// SPDX-License-Identifier: BSD-3-Clause
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
    if (m_memory && m_width == pictureWidth && m_height == pictureHeight &&
        m_format == pictureFormat) {
        describe();
        return false;
    }
    m_width = pictureWidth;
    m_height = pictureHeight;
    m_format = pictureFormat;
    const bool interleaved = m_format == PixelFormat::NV12;
    const std::int32_t chromaWidth = (m_width + 1) / 2;
    m_planes[0].stride = aligned(m_width);
    m_planes[1].stride = aligned(interleaved ? chromaWidth * 2 : chromaWidth);
    m_planes[2].stride = interleaved ? 0 : m_planes[1].stride;

    const std::size_t chromaHeight = std::size_t(m_height + 1) / 2;
    const std::size_t lumaSize = std::size_t(m_planes[0].stride) * std::size_t(m_height);
    const std::size_t firstChromaSize = std::size_t(m_planes[1].stride) * chromaHeight;
    const std::size_t secondChromaSize = std::size_t(m_planes[2].stride) * chromaHeight;
    const std::size_t size = lumaSize + firstChromaSize + secondChromaSize;
    m_memory.reset(static_cast<std::uint8_t *>(std::aligned_alloc(Alignment, size)));
    if (!m_memory)
        throw std::bad_alloc();
    m_planes[0].data = m_memory.get();
    m_planes[1].data = m_planes[0].data + lumaSize;
    m_planes[2].data = interleaved ? nullptr : m_planes[1].data + firstChromaSize;
    describe();
    return true;
}

void PictureMemory::describe()
{
    width = m_width;
    height = m_height;
    format = m_format;
    planeCount = m_format == PixelFormat::NV12 ? 2 : 3;
    const std::int32_t chromaHeight = (m_height + 1) / 2;
    for (std::size_t i = 0; i < planes.size(); ++i)
        planes[i] = { m_planes[i].data, m_planes[i].stride, i == 0 ? m_height : chromaHeight };
    if (planeCount == 2)
        planes[2] = {};
}

} // namespace Ocelle
} // namespace Veltra
