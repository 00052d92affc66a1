// SPDX-License-Identifier: BSD-3-Clause
#include "doubleencoder.h"

#include "doubleplatform.h"
#include "doubleunit.h"

#include <patternreader.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

using namespace Veltra::Ocelle;

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
    putOut(number, *frame, isKey);
    if (number == 3 && DoublePlatform::has(Fault::EncoderKeepsPicture))
        DoublePlatform::keep(std::move(frame));
    return true;
}

void DoubleEncoder::putOut(std::uint32_t number, const YCbCrFrame &frame, bool isKey)
{
    constexpr int bits = 8; // per byte
    const bool isReallyKey =
            isKey && (number == 0 || !DoublePlatform::has(Fault::EncoderMislabelsKeys));
    const DoubleUnit unit {
        DoubleUnit::Magic, std::int32_t(m_type), frame.width, frame.height, number,
        m_rotation,        m_isMirrored,         isReallyKey
    };
    std::vector<unsigned char> data(
            std::max(sizeof unit, std::size_t(m_config.bitrate / m_config.frameRate / bits)));
    std::memcpy(data.data(), &unit, sizeof unit);
    constexpr std::int64_t coarse = 1000; // microseconds
    const bool isRounded = DoublePlatform::has(Fault::EncoderRoundsStamps);
    const std::int64_t stamp = isRounded ? frame.timestamp / coarse * coarse : frame.timestamp;
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

bool DoubleEncoder::encodeRGB(std::shared_ptr<RGBFrame>, bool)
{
    return false;
}
