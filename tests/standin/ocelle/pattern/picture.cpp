// SPDX-License-Identifier: BSD-3-Clause
#include "picture.h"

#include <algorithm>

namespace {
constexpr int Guard = 256; // bytes before and behind a plane
constexpr std::uint8_t Untouched = 0xa5;
} // namespace

Picture::Picture(int width, int height, PixelFormat format, int padding)
    : m_width(width)
    , m_height(height)
{
    const bool interleaved = format == PixelFormat::NV12;
    const int chromaWidth = (width + 1) / 2;
    const int chromaLines = (height + 1) / 2;
    m_memory.push_back({ {}, width, height });
    m_memory.push_back({ {}, interleaved ? chromaWidth * 2 : chromaWidth, chromaLines });
    if (!interleaved)
        m_memory.push_back({ {}, chromaWidth, chromaLines });
    for (std::size_t i = 0; i < m_memory.size(); ++i) {
        Layout &layout = m_memory[i];
        const int stride = layout.bytesPerLine + padding;
        layout.memory.assign(static_cast<std::size_t>(stride * layout.lines + 2 * Guard),
                             Untouched);
        m_planes[i] = { layout.memory.data() + Guard, stride };
    }
}

bool Picture::surroundingsIntact() const
{
    const auto intact = [](std::uint8_t value) { return value == Untouched; };
    for (std::size_t i = 0; i < m_memory.size(); ++i) {
        const Layout &layout = m_memory[i];
        const std::uint8_t *line = layout.memory.data() + Guard;
        if (!std::all_of(layout.memory.data(), line, intact))
            return false;
        for (int y = 0; y < layout.lines; ++y, line += m_planes[i].stride) {
            if (!std::all_of(line + layout.bytesPerLine, line + m_planes[i].stride, intact))
                return false;
        }
        if (!std::all_of(line, line + Guard, intact))
            return false;
    }
    return true;
}

std::vector<std::uint8_t> Picture::samples() const
{
    std::vector<std::uint8_t> all;
    for (std::size_t i = 0; i < m_memory.size(); ++i) {
        const std::uint8_t *line = m_planes[i].data;
        for (int y = 0; y < m_memory[i].lines; ++y, line += m_planes[i].stride)
            all.insert(all.end(), line, line + m_memory[i].bytesPerLine);
    }
    return all;
}
