// SPDX-License-Identifier: BSD-3-Clause
#include "testpictures.h"

#include <testpattern.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr std::size_t LumaSize = std::size_t(PictureWidth) * PictureHeight;
constexpr int NoiseLines = PictureHeight / 2; // above the cells that carry the number

template <class Frame>
struct CountedPicture : Frame
{
    CountedPicture(std::size_t size, std::shared_ptr<PictureCount> counted)
        : Frame()
        , memory(size)
        , count(std::move(counted))
    {
        ++count->made;
    }
    ~CountedPicture() { ++count->released; }

    std::vector<std::uint8_t> memory;
    const std::shared_ptr<PictureCount> count;
};

void addNoise(std::vector<std::uint8_t> *memory, std::uint32_t seed)
{
    std::minstd_rand random(seed + 1);
    for (std::size_t i = 0; i < std::size_t(NoiseLines) * PictureWidth; ++i)
        (*memory)[i] = std::uint8_t(64 + random() % 128);
}

// A pixel of Qt's RGB32, a word of this machine's byte order.
std::uint32_t rgb32(int y, int cb, int cr)
{
    const int luma = 298 * (y - 16) + 128;
    const auto byte = [](int value) { return std::uint32_t(std::clamp(value / 256, 0, 255)); };
    return 0xff000000 | byte(luma + 409 * (cr - 128)) << 16 |
           byte(luma - 100 * (cb - 128) - 208 * (cr - 128)) << 8 | byte(luma + 516 * (cb - 128));
}

} // namespace

std::shared_ptr<YCbCrFrame> makePicture(std::uint32_t number, std::int64_t timestamp,
                                        std::shared_ptr<PictureCount> count, bool noise)
{
    static const TestPattern pattern(PictureWidth, PictureHeight, PixelFormat::YU12);
    auto picture = std::make_shared<CountedPicture<YCbCrFrame>>(LumaSize * 3 / 2, std::move(count));
    std::uint8_t *const y = picture->memory.data();
    std::uint8_t *const cb = y + LumaSize;
    std::uint8_t *const cr = cb + LumaSize / 4;
    const TestPattern::Planes planes {
        { { y, PictureWidth }, { cb, PictureWidth / 2 }, { cr, PictureWidth / 2 } }
    };
    pattern.paintBackground(planes);
    pattern.update(planes, number, std::int64_t(number) * 1000000 / PictureRate);
    if (noise)
        addNoise(&picture->memory, number);
    picture->y = y;
    picture->cb = cb;
    picture->cr = cr;
    picture->yStride = PictureWidth;
    picture->cStride = PictureWidth / 2;
    picture->chromaStep = 1;
    picture->width = PictureWidth;
    picture->height = PictureHeight;
    picture->timestamp = timestamp;
    return picture;
}

std::shared_ptr<RGBFrame> makeRgbPicture(std::uint32_t number, std::int64_t timestamp,
                                         std::shared_ptr<PictureCount> count)
{
    constexpr std::uint32_t bx24 = 0x34325842; // of all such pictures, whatever the byte order
    constexpr std::size_t pixelSize = sizeof(std::uint32_t);
    const auto painted = makePicture(number, timestamp, std::make_shared<PictureCount>());
    auto picture =
            std::make_shared<CountedPicture<RGBFrame>>(LumaSize * pixelSize, std::move(count));
    for (std::size_t i = 0; i < LumaSize; ++i) {
        const std::size_t chroma = i / PictureWidth / 2 * painted->cStride + i % PictureWidth / 2;
        const std::uint32_t pixel = rgb32(painted->y[i], painted->cb[chroma], painted->cr[chroma]);
        std::memcpy(&picture->memory[i * pixelSize], &pixel, pixelSize);
    }
    picture->fourcc = bx24;
    picture->width = PictureWidth;
    picture->height = PictureHeight;
    picture->stride = std::uint16_t(PictureWidth * pixelSize);
    picture->data = picture->memory.data();
    picture->timestamp = timestamp;
    return picture;
}

} // namespace Compliance
