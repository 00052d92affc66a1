// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/frames.h>

#include <atomic>
#include <cstdint>
#include <memory>

namespace Compliance {

constexpr int PictureWidth = 320; // pixels
constexpr int PictureHeight = 240;
constexpr int PictureRate = 30; // per second

/*! How many pictures were handed out, and how many of them came back. */
struct PictureCount
{
    std::atomic<int> made { 0 };
    std::atomic<int> released { 0 };
};

/*!
 * A test picture with a number, planar. \a count is told of its life and has to outlive it. With
 * noise its upper part is hard to compress, so that a bit rate is used up.
 */
std::shared_ptr<Veltra::Ocelle::YCbCrFrame> makePicture(std::uint32_t number,
                                                        std::int64_t timestamp,
                                                        std::shared_ptr<PictureCount> count,
                                                        bool noise = false);

/*! The same in RGB, as the back end hands over pictures of QVideoFrame::Format_RGB32. */
std::shared_ptr<Veltra::Ocelle::RGBFrame>
makeRgbPicture(std::uint32_t number, std::int64_t timestamp, std::shared_ptr<PictureCount> count);

} // namespace Compliance
