// SPDX-License-Identifier: BSD-3-Clause
#include "capturemodes.h"

#include "v4l2format.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::uint32_t MaxSide = 16384; // pixels
constexpr std::uint32_t MaxRate = 1000;  // pictures per second
constexpr PictureSize PreferredSize { 640, 480 };
constexpr std::uint32_t PreferredRate = 30;

const PictureSize CommonSizes[] = { { 320, 180 },   { 320, 240 },   { 640, 360 },   { 640, 480 },
                                    { 800, 600 },   { 960, 540 },   { 1024, 768 },  { 1280, 720 },
                                    { 1280, 960 },  { 1600, 1200 }, { 1920, 1080 }, { 2560, 1440 },
                                    { 2592, 1944 }, { 3840, 2160 } };
const std::uint32_t CommonRates[] = { 120, 90, 60, 50, 30, 25, 24, 20, 15, 10, 5 };

bool isPossible(std::uint32_t width, std::uint32_t height)
{
    return width > 0 && height > 0 && width <= MaxSide && height <= MaxSide;
}

bool isPossible(const v4l2_fract &interval)
{
    const std::uint32_t rate = rateOf(interval);
    return rate > 0 && rate <= MaxRate;
}

template <class Value>
void addOnce(std::vector<Value> &all, const Value &value)
{
    if (std::find(all.begin(), all.end(), value) == all.end())
        all.push_back(value);
}

bool isStep(std::uint32_t value, std::uint32_t min, std::uint32_t max, std::uint32_t step)
{
    return value >= min && value <= max && (step == 0 || (value - min) % step == 0);
}

std::uint32_t largest(std::uint32_t min, std::uint32_t max, std::uint32_t step)
{
    max = std::min(max, MaxSide);
    return step == 0 || max < min ? max : max - (max - min) % step;
}

void addRange(std::vector<PictureSize> &all, const v4l2_frmsize_stepwise &range)
{
    for (const PictureSize &size : CommonSizes) {
        if (isStep(std::uint32_t(size.first), range.min_width, range.max_width, range.step_width) &&
            isStep(std::uint32_t(size.second), range.min_height, range.max_height,
                   range.step_height))
            addOnce(all, size);
    }
    if (range.min_width > range.max_width || range.min_height > range.max_height)
        return;
    const std::uint32_t width = largest(range.min_width, range.max_width, range.step_width);
    const std::uint32_t height = largest(range.min_height, range.max_height, range.step_height);
    if (isPossible(width, height) && width >= range.min_width && height >= range.min_height)
        addOnce(all, { std::int32_t(width), std::int32_t(height) });
}

// Compares as fractions, so without rounding.
bool isShorter(const v4l2_fract &a, const v4l2_fract &b)
{
    return std::uint64_t(a.numerator) * b.denominator < std::uint64_t(b.numerator) * a.denominator;
}

bool isEqual(const v4l2_fract &a, const v4l2_fract &b)
{
    return !isShorter(a, b) && !isShorter(b, a);
}

void addOnce(std::vector<v4l2_fract> &all, const v4l2_fract &interval)
{
    const auto isSame = [&interval](const v4l2_fract &other) { return isEqual(other, interval); };
    if (std::none_of(all.begin(), all.end(), isSame))
        all.push_back(interval);
}

void addRange(std::vector<v4l2_fract> &all, const v4l2_frmival_stepwise &range)
{
    if (range.min.denominator == 0 || range.max.denominator == 0)
        return;
    if (isPossible(range.min) && !isShorter(range.max, range.min))
        addOnce(all, range.min);
    for (const std::uint32_t rate : CommonRates) {
        const v4l2_fract interval { 1, rate };
        if (!isShorter(interval, range.min) && !isShorter(range.max, interval))
            addOnce(all, interval);
    }
}

std::int64_t distance(std::int64_t a, std::int64_t b)
{
    return std::abs(a - b);
}

std::tuple<bool, std::int64_t, std::int32_t> sizeOrder(const PictureSize &size,
                                                       const PictureSize &preferred)
{
    return { size != preferred, std::int64_t(size.first) * size.second, size.first };
}

} // namespace

std::vector<PictureSize> sizesFrom(const std::vector<v4l2_frmsizeenum> &answers)
{
    std::vector<PictureSize> all;
    for (const v4l2_frmsizeenum &answer : answers) {
        if (answer.type == V4L2_FRMSIZE_TYPE_STEPWISE ||
            answer.type == V4L2_FRMSIZE_TYPE_CONTINUOUS)
            addRange(all, answer.stepwise);
        else if (answer.type == V4L2_FRMSIZE_TYPE_DISCRETE &&
                 isPossible(answer.discrete.width, answer.discrete.height))
            addOnce(all,
                    { std::int32_t(answer.discrete.width), std::int32_t(answer.discrete.height) });
    }
    return all;
}

std::vector<v4l2_fract> intervalsFrom(const std::vector<v4l2_frmivalenum> &answers)
{
    std::vector<v4l2_fract> all;
    for (const v4l2_frmivalenum &answer : answers) {
        if (answer.type == V4L2_FRMIVAL_TYPE_STEPWISE ||
            answer.type == V4L2_FRMIVAL_TYPE_CONTINUOUS)
            addRange(all, answer.stepwise);
        else if (answer.type == V4L2_FRMIVAL_TYPE_DISCRETE && isPossible(answer.discrete))
            addOnce(all, answer.discrete);
    }
    std::sort(all.begin(), all.end(), isShorter);
    return all;
}

std::uint32_t rateOf(const v4l2_fract &interval)
{
    if (interval.numerator == 0 || interval.denominator == 0)
        return 0;
    const std::uint64_t rounded =
            (std::uint64_t(interval.denominator) + interval.numerator / 2) / interval.numerator;
    return std::uint32_t(std::max<std::uint64_t>(rounded, 1));
}

std::vector<CameraCapability> capabilitiesOf(const std::vector<CaptureMode> &modes)
{
    std::vector<CameraCapability> all;
    PictureSize preferred { 0, 0 };
    const auto fromPreferred = [](const PictureSize &size) {
        return distance(size.first, PreferredSize.first) +
               distance(size.second, PreferredSize.second);
    };
    for (const CaptureMode &mode : modes) {
        const PictureSize size { mode.width, mode.height };
        if (preferred.first == 0 || fromPreferred(size) < fromPreferred(preferred))
            preferred = size;
        const auto isSame = [&mode](const CameraCapability &other) {
            return other.width == mode.width && other.height == mode.height &&
                   other.frameRate == mode.rate;
        };
        if (V4l2Format::find(mode.fourcc) && std::none_of(all.begin(), all.end(), isSame))
            all.push_back({ mode.width, mode.height, mode.rate });
    }
    std::sort(all.begin(), all.end(), [&](const CameraCapability &a, const CameraCapability &b) {
        const auto sizeA = sizeOrder({ a.width, a.height }, preferred);
        const auto sizeB = sizeOrder({ b.width, b.height }, preferred);
        return sizeA != sizeB ? sizeA < sizeB : a.frameRate > b.frameRate;
    });
    // Within each size the rate nearest to the usual one comes to the front.
    for (auto first = all.begin(); first != all.end();) {
        const auto last = std::find_if(first, all.end(), [&first](const CameraCapability &other) {
            return other.width != first->width || other.height != first->height;
        });
        const auto nearest = std::min_element(
                first, last, [](const CameraCapability &a, const CameraCapability &b) {
                    return distance(a.frameRate, PreferredRate) <
                           distance(b.frameRate, PreferredRate);
                });
        std::rotate(first, nearest, std::next(nearest));
        first = last;
    }
    return all;
}

std::vector<PixelFormat> deliveredFormats(const std::vector<CaptureMode> &modes)
{
    std::vector<PixelFormat> all;
    for (const CameraCapability &capability : capabilitiesOf(modes)) {
        const CaptureMode *const mode = chooseMode(modes, capability);
        const V4l2Format *const format = mode ? V4l2Format::find(mode->fourcc) : nullptr;
        if (format)
            addOnce(all, format->delivered);
    }
    return all;
}

const CaptureMode *chooseMode(const std::vector<CaptureMode> &modes,
                              const CameraCapability &capability)
{
    const v4l2_fract exact { 1, capability.frameRate };
    const auto order = [&exact](const CaptureMode &mode) {
        const std::uint64_t a = std::uint64_t(mode.interval.numerator) * exact.denominator;
        const std::uint64_t b = mode.interval.denominator; // equal to a at the exact rate
        const double off = std::abs(double(a) / double(b) - 1.0);
        return std::make_pair(V4l2Format::rank(mode.fourcc), off);
    };
    const CaptureMode *best = nullptr;
    for (const CaptureMode &mode : modes) {
        const bool matches = mode.width == capability.width && mode.height == capability.height &&
                             mode.rate == capability.frameRate && V4l2Format::find(mode.fourcc);
        if (matches && (!best || order(mode) < order(*best)))
            best = &mode;
    }
    return best;
}

} // namespace Ocelle
} // namespace Veltra
