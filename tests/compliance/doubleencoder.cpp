// SPDX-License-Identifier: BSD-3-Clause
#include "doubleencoder.h"

#include "doubleplatform.h"

#include <patternreader.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

using namespace Veltra::Ocelle;

namespace {

constexpr std::uint32_t Bx24 = 0x34325842;

int middleOfBar(int bar, int width)
{
    return (2 * bar + 1) * width / (2 * DoubleUnit::Bars);
}

DoubleUnit unitOf(const YCbCrFrame &frame, std::uint32_t number)
{
    DoubleUnit unit {};
    unit.width = frame.width;
    unit.height = frame.height;
    unit.number = number;
    for (int bar = 0; bar < DoubleUnit::Bars; ++bar) {
        const int x = middleOfBar(bar, frame.width); // on the first line
        const int chroma = x / 2 * frame.chromaStep;
        unit.bars[bar] = { frame.y[x], frame.cb[chroma], frame.cr[chroma] };
    }
    return unit;
}

DoubleUnit unitOf(const RGBFrame &frame, std::uint32_t number)
{
    DoubleUnit unit {};
    unit.width = frame.width;
    unit.height = frame.height;
    unit.number = number;
    for (int bar = 0; bar < DoubleUnit::Bars; ++bar) {
        const unsigned char *const pixel = frame.data + middleOfBar(bar, frame.width) * 4;
        double blue = pixel[0];
        const double green = pixel[1];
        double red = pixel[2];
        if (DoublePlatform::has(Fault::RgbIsSwapped))
            std::swap(red, blue);
        const double y = 0.299 * red + 0.587 * green + 0.114 * blue;
        unit.bars[bar] = { std::uint8_t(16 + y * 219 / 255),
                           std::uint8_t(128 + (blue - y) / 1.772 * 224 / 255),
                           std::uint8_t(128 + (red - y) / 1.402 * 224 / 255) };
    }
    return unit;
}

} // namespace

std::atomic<int> DoubleEncoder::s_alive { 0 };

DoubleEncoder::DoubleEncoder(CodecType type)
    : m_type(type)
{
    ++s_alive;
}

DoubleEncoder::~DoubleEncoder()
{
    --s_alive;
}

int DoubleEncoder::alive()
{
    return s_alive;
}

bool DoubleEncoder::initialize(EncoderConfig config)
{
    const bool hasSize = config.width > 0 && config.height > 0;
    if (config.codecType != std::int32_t(m_type) ||
        (!hasSize && !DoublePlatform::has(Fault::EncoderTakesNoSize)))
        return false;
    m_config = config;
    m_isInitialized = true;
    return true;
}

bool DoubleEncoder::mayEncode(const YCbCrFrame &frame)
{
    if (frame.width == 0 || frame.height == 0) {
        m_isBroken = DoublePlatform::has(Fault::EncoderBreaks);
        return false;
    }
    return !m_isBroken;
}

bool DoubleEncoder::encode(std::shared_ptr<YCbCrFrame> frame, bool keyFrame)
{
    if (!m_isInitialized)
        return DoublePlatform::has(Fault::EncoderTakesAnything);
    if (!mayEncode(*frame))
        return false;
    const auto reading = readPattern(frame->y, frame->yStride, frame->width, frame->height);
    if (!reading)
        return false;
    std::uint32_t number = reading->sequence;
    if (number == 5 && DoublePlatform::has(Fault::EncoderRepeats))
        number = 4;
    const bool wantsKey = keyFrame && !DoublePlatform::has(Fault::EncoderSkipsKeys);
    const bool isKey = !m_hasKey || wantsKey || DoublePlatform::has(Fault::EncoderMakesKeysOnly);
    m_hasKey = true;
    putOut(unitOf(*frame, number), frame->timestamp, isKey);
    if (number == 3 && DoublePlatform::has(Fault::EncoderKeepsPicture))
        DoublePlatform::keep(std::move(frame));
    return true;
}

void DoubleEncoder::putOut(DoubleUnit unit, std::int64_t timestamp, bool isKey)
{
    constexpr int bits = 8; // per byte
    unit.magic = DoubleUnit::Magic;
    unit.type = std::int32_t(m_type);
    unit.rotation = m_rotation;
    unit.mirrored = m_isMirrored;
    unit.isKey = isKey && (unit.number == 0 || !DoublePlatform::has(Fault::EncoderMislabelsKeys));
    std::vector<unsigned char> data(
            std::max(sizeof unit, std::size_t(m_config.bitrate / m_config.frameRate / bits)));
    std::memcpy(data.data(), &unit, sizeof unit);
    constexpr std::int64_t coarse = 1000; // microseconds
    const bool isRounded = DoublePlatform::has(Fault::EncoderRoundsStamps);
    const std::int64_t stamp = isRounded ? timestamp / coarse * coarse : timestamp;
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener)
        m_listener->onEncodedFrame(data.data(), data.size(), static_cast<unsigned long>(stamp),
                                   isKey ? FrameType::Key : FrameType::Delta);
}

bool DoubleEncoder::setBitrate(int bitrate)
{
    if (bitrate <= 0)
        return false;
    if (!DoublePlatform::has(Fault::EncoderKeepsBitRate))
        m_config.bitrate = bitrate;
    return true;
}

bool DoubleEncoder::setParameter(VideoEncoderParameter parameter, const std::string &value)
{
    switch (parameter) {
    case VideoEncoderParameter::BitrateModeParameter:
        return value == "constant" || value == "variable";
    case VideoEncoderParameter::RotationParameter:
        if (value != "0" && value != "90" && value != "180" && value != "270")
            return false;
        if (!DoublePlatform::has(Fault::EncoderIgnoresTurn))
            m_rotation = std::stoi(value);
        return true;
    case VideoEncoderParameter::MirrorVerticalParameter:
        if (value != "true" && value != "false")
            return false;
        m_isMirrored = value == "true" && !DoublePlatform::has(Fault::EncoderIgnoresMirror);
        return true;
    case VideoEncoderParameter::UnknownParameter0:
    case VideoEncoderParameter::UnknownParameter3:
        break;
    }
    return false;
}

bool DoubleEncoder::encodeRGB(std::shared_ptr<RGBFrame> frame, bool keyFrame)
{
    if (!m_isInitialized || frame->fourcc != Bx24 || DoublePlatform::has(Fault::RgbIsRefused))
        return false;
    const auto reading = readPatternRgb32(frame->data, frame->stride, frame->width, frame->height);
    if (!reading)
        return false;
    if (reading->sequence >= 3 && DoublePlatform::has(Fault::RgbIsLost))
        return true;
    const bool wantsKey = keyFrame && !DoublePlatform::has(Fault::RgbSkipsKeys);
    const bool isKey = !m_hasKey || wantsKey;
    m_hasKey = true;
    const bool hasTime = !DoublePlatform::has(Fault::RgbHasNoTime);
    putOut(unitOf(*frame, reading->sequence), hasTime ? frame->timestamp : 0, isKey);
    if (DoublePlatform::has(Fault::RgbIsKept))
        DoublePlatform::keep(std::move(frame));
    return true;
}
