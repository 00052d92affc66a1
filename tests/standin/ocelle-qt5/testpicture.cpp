// SPDX-License-Identifier: BSD-3-Clause
#include "testpicture.h"

#include <QVideoFrame>

#include <algorithm>
#include <cmath>

using namespace Veltra::Ocelle;

namespace {

int clamped(double value)
{
    return int(std::lround(std::clamp(value, 0.0, 255.0)));
}

} // namespace

TestPicture::TestPicture(PixelFormat layout, int pictureWidth, int pictureHeight, int padding)
{
    const bool planar = layout == PixelFormat::YU12 || layout == PixelFormat::YUV420Planar;
    const int chromaWidth = (pictureWidth + 1) / 2;
    const int chromaHeight = (pictureHeight + 1) / 2;
    width = pictureWidth;
    height = pictureHeight;
    format = layout;
    planeCount = planar ? 3 : 2;
    memory.resize(std::size_t(planeCount));
    for (std::size_t i = 0; i < memory.size(); ++i) {
        const int bytes = i == 0 ? width : planar ? chromaWidth : 2 * chromaWidth;
        const int lines = i == 0 ? height : chromaHeight;
        memory[i].assign(std::size_t((bytes + padding) * lines), 0xee);
        planes[i] = { memory[i].data(), bytes + padding, lines };
    }
    const auto put = [this](std::size_t plane, int x, int y, int value) {
        memory[plane][std::size_t(y * planes[plane].stride + x)] = std::uint8_t(value);
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            put(0, x, y, expectedSample(x, y).y);
    }
    for (int y = 0; y < chromaHeight; ++y) {
        for (int x = 0; x < chromaWidth; ++x) {
            const Sample sample = expectedSample(2 * x, 2 * y);
            const bool crFirst = layout == PixelFormat::NV21;
            put(1, planar ? x : 2 * x + (crFirst ? 1 : 0), y, sample.cb);
            put(planar ? 2 : 1, planar ? x : 2 * x + (crFirst ? 0 : 1), y, sample.cr);
        }
    }
}

bool operator==(const Sample &a, const Sample &b)
{
    return a.y == b.y && a.cb == b.cb && a.cr == b.cr;
}

Sample expectedSample(int x, int y)
{
    const int cx = x / 2;
    const int cy = y / 2;
    return { 16 + (x * 7 + y * 13) % 200, 40 + (cx * 5 + cy * 3) % 160,
             60 + (cx * 11 + cy * 17) % 140 };
}

Sample toRgb(const Sample &sample)
{
    const double y = 1.164 * (sample.y - 16);
    const double cb = sample.cb - 128;
    const double cr = sample.cr - 128;
    return { clamped(y + 1.596 * cr), clamped(y - 0.392 * cb - 0.813 * cr),
             clamped(y + 2.017 * cb) };
}

Sample sampleOf(const QVideoFrame &frame, int x, int y)
{
    const auto at = [&frame](int plane, int column, int line) {
        return int(frame.bits(plane)[line * frame.bytesPerLine(plane) + column]);
    };
    const int cx = x / 2;
    const int cy = y / 2;
    const int luma = at(0, x, y);
    switch (frame.pixelFormat()) {
    case QVideoFrame::Format_YUV420P:
        return { luma, at(1, cx, cy), at(2, cx, cy) };
    case QVideoFrame::Format_YV12:
        return { luma, at(2, cx, cy), at(1, cx, cy) };
    case QVideoFrame::Format_NV12:
        return { luma, at(1, 2 * cx, cy), at(1, 2 * cx + 1, cy) };
    case QVideoFrame::Format_NV21:
        return { luma, at(1, 2 * cx + 1, cy), at(1, 2 * cx, cy) };
    default:
        return { -1, -1, -1 };
    }
}

std::shared_ptr<TestPicture> makePicture(PixelFormat format, int width, int height)
{
    return std::make_shared<TestPicture>(format, width, height);
}

std::shared_ptr<TestPicture> makeLive(int number)
{
    auto picture = makeDecoded(number);
    picture->live = true;
    return picture;
}

std::shared_ptr<TestPicture> makeDecoded(int number)
{
    auto picture = makePicture(PixelFormat::NV12, 16, 8);
    picture->sequence = std::uint64_t(number);
    picture->timestamp = number;
    return picture;
}
