// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleinputrgbframe.h"

namespace {

constexpr std::uint32_t Bx24 = 0x34325842; // goes with every RGB32 picture, whatever the byte order
constexpr int BytesPerPixel = 4;

} // namespace

OcelleInputRGBFrame::OcelleInputRGBFrame(const QVideoFrame &source)
    : Veltra::Ocelle::RGBFrame()
    , m_mapped(source)
{
    const QVideoFrame &picture = frame();
    fourcc = Bx24;
    width = static_cast<std::uint16_t>(picture.width());
    height = static_cast<std::uint16_t>(picture.height());
    stride = static_cast<std::uint16_t>(picture.bytesPerLine());
    data = picture.bits(0);
    timestamp = picture.startTime();
    if (data && (picture.bytesPerLine() < 0 ||
                 !m_mapped.covers(data, height, stride, width * BytesPerPixel))) {
        m_mapped.warnOfMissingMemory();
        data = nullptr;
    }
}
