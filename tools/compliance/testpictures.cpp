// SPDX-License-Identifier: BSD-3-Clause
#include "testpictures.h"

#include <testpattern.h>

#include <random>
#include <utility>
#include <vector>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr std::size_t LumaSize = std::size_t(PictureWidth) * PictureHeight;
constexpr int NoiseLines = PictureHeight / 2; // above the cells that carry the number

struct CountedPicture : YCbCrFrame
{
    explicit CountedPicture(std::shared_ptr<PictureCount> counted)
        : YCbCrFrame()
        , memory(LumaSize * 3 / 2)
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

} // namespace

std::shared_ptr<YCbCrFrame> makePicture(std::uint32_t number, std::int64_t timestamp,
                                        std::shared_ptr<PictureCount> count, bool noise)
{
    static const TestPattern pattern(PictureWidth, PictureHeight, PixelFormat::YU12);
    auto picture = std::make_shared<CountedPicture>(std::move(count));
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

} // namespace Compliance
