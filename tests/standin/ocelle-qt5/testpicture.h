// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <cstdint>
#include <memory>
#include <vector>

class QVideoFrame;

/*!
 * A picture whose every sample is known, in memory of its own with padding after each line.
 */
struct TestPicture : Veltra::Ocelle::GraphicBuffer
{
    static constexpr int DefaultPadding = 8; // bytes after each line

    TestPicture(Veltra::Ocelle::PixelFormat layout, int pictureWidth, int pictureHeight,
                int padding = DefaultPadding);

    std::vector<std::vector<std::uint8_t>> memory; // one per plane
};

struct Sample
{
    int y, cb, cr;
};
bool operator==(const Sample &a, const Sample &b);

/*! What a TestPicture has at a pixel; its chroma is the same for each 2x2 pixels. */
Sample expectedSample(int x, int y);

/*! The same as red, green and blue, BT.601 of limited range. */
Sample toRgb(const Sample &sample);

/*! What \a frame, mapped and of a 4:2:0 layout, has at a pixel. */
Sample sampleOf(const QVideoFrame &frame, int x, int y);

std::shared_ptr<TestPicture>
makePicture(Veltra::Ocelle::PixelFormat format = Veltra::Ocelle::PixelFormat::NV12, int width = 64,
            int height = 48);

/*! A small NV12 picture with \a number as sequence number and as timestamp. */
std::shared_ptr<TestPicture> makeLive(int number);
std::shared_ptr<TestPicture> makeDecoded(int number);
