// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <linux/videodev2.h>
#include <ocelle/camera.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! One way a device can capture: a format at a size with a time between pictures. */
struct CaptureMode
{
    std::uint32_t fourcc;
    std::int32_t width;  // pixels
    std::int32_t height; // pixels
    v4l2_fract interval; // seconds
    std::uint32_t rate;  // pictures per second, rounded
};

using PictureSize = std::pair<std::int32_t, std::int32_t>; // width, height

// These make sense of what a driver answers, whatever it answers: what cannot be is left out.

/*!
 * The sizes in the answers to VIDIOC_ENUM_FRAMESIZES. Of a range, which is always the only answer,
 * those that cameras usually have, and its largest.
 */
std::vector<PictureSize> sizesFrom(const std::vector<v4l2_frmsizeenum> &answers);

/*!
 * The intervals in the answers to VIDIOC_ENUM_FRAMEINTERVALS, shortest first. Of a range those of
 * the usual rates, and its shortest.
 */
std::vector<v4l2_fract> intervalsFrom(const std::vector<v4l2_frmivalenum> &answers);

/*! Pictures per second, rounded to the nearest, at least 1; 0 for no interval at all. */
std::uint32_t rateOf(const v4l2_fract &interval);

/*!
 * What is offered of \a modes, each once and preferred first: the size nearest to 640x480 and then
 * the others from small to large; within a size the rate nearest to 30 and then from fast to slow.
 */
std::vector<CameraCapability> capabilitiesOf(const std::vector<CaptureMode> &modes);

/*! The formats that capturing at these modes delivers, that of the preferred capability first. */
std::vector<PixelFormat> deliveredFormats(const std::vector<CaptureMode> &modes);

/*!
 * The cheapest of \a modes with this size and rate: uncopied before converted before compressed,
 * then the one nearest to the rate. Null where there is none.
 */
const CaptureMode *chooseMode(const std::vector<CaptureMode> &modes,
                              const CameraCapability &capability);

} // namespace Ocelle
} // namespace Veltra
