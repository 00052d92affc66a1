// SPDX-License-Identifier: BSD-3-Clause
#include "localvideoencoder.h"

#include "listenercallscope.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {
constexpr int MaxSide = 16384; // pixels

std::string describe(const EncoderConfig &config)
{
    return std::to_string(config.width) + 'x' + std::to_string(config.height);
}

// What is wrong with a configuration, as text; empty where nothing is.
std::string problem(const EncoderConfig &config, CodecType type)
{
    if (config.codecType != std::int32_t(type))
        return "cannot do codec " + std::to_string(config.codecType);
    if (config.width <= 0 || config.height <= 0)
        return "pictures of " + describe(config) + " have no size";
    if (config.width > MaxSide || config.height > MaxSide)
        return "pictures of " + describe(config) + " are too large";
    if (config.stride < 0 || config.sliceHeight < 0)
        return "a stride of " + std::to_string(config.stride) + " and " +
               std::to_string(config.sliceHeight) + " lines per plane make no picture";
    if (config.bitrate < MinEncoderBitrate || config.bitrate > MaxEncoderBitrate)
        return "a bit rate of " + std::to_string(config.bitrate) + " is out of range";
    if (config.frameRate <= 0 || config.frameRate > MaxEncoderFrameRate)
        return "a frame rate of " + std::to_string(config.frameRate) + " is out of range";
    return {};
}

std::optional<int> quarterTurn(const std::string &text)
{
    char *end = nullptr;
    const long degrees = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || degrees % 90)
        return {};
    return int((degrees % 360 + 360) % 360);
}
} // namespace

LocalVideoEncoder::LocalVideoEncoder(CodecType type,
                                     std::vector<std::shared_ptr<EncoderFactory>> candidates)
    : m_type(type)
    , m_choice(std::move(candidates))
{
}

LocalVideoEncoder::~LocalVideoEncoder() = default;

// For as long as an operation goes on: its callbacks may drop the last other reference.
std::shared_ptr<LocalVideoEncoder> LocalVideoEncoder::keepAlive()
{
    return weak_from_this().lock();
}

bool LocalVideoEncoder::initialize(EncoderConfig config)
{
    const auto self = keepAlive();
    if (ListenerCallScope::isActive(this))
        return refuse("cannot be configured from within its own callback");
    const std::string reason = problem(config, m_type);
    if (!reason.empty())
        return refuse(reason);
    const PictureSize size = m_input.turnedSize(config.width, config.height);
    m_settings.width = size.width;
    m_settings.height = size.height;
    m_settings.frameRate = config.frameRate;
    m_settings.bitrate = config.bitrate;
    m_wantedBitrate = config.bitrate;
    m_isInitialized = open();
    return m_isInitialized;
}

bool LocalVideoEncoder::encode(std::shared_ptr<YCbCrFrame> frame, bool keyFrame)
{
    return encodeFrame(std::move(frame), keyFrame);
}

bool LocalVideoEncoder::encodeRGB(std::shared_ptr<RGBFrame> frame, bool keyFrame)
{
    return encodeFrame(std::move(frame), keyFrame);
}

template <class Frame>
bool LocalVideoEncoder::encodeFrame(std::shared_ptr<Frame> frame, bool keyFrame)
{
    const auto self = keepAlive();
    if (ListenerCallScope::isActive(this))
        return refuse("takes no picture from within its own callback");
    if (!m_isInitialized)
        return refuse("takes no picture before it is configured");
    if (!frame)
        return refuse("there is no picture");
    std::string error;
    if (!EncoderInput::check(*frame, &error))
        return refuse(error);
    if (!makeReady(m_input.turnedSize(frame->width, frame->height), keyFrame))
        return false;
    return compress(m_input.prepare(*frame, *m_choice.encoder()), frame->timestamp, keyFrame);
}

bool LocalVideoEncoder::setBitrate(int bitrate)
{
    const auto self = keepAlive();
    if (bitrate <= 0)
        return false;
    if (!m_isInitialized)
        return refuse("has no bit rate to change before it is configured");
    if (bitrate < MinEncoderBitrate || bitrate > MaxEncoderBitrate)
        return refuse("a bit rate of " + std::to_string(bitrate) + " is out of range");
    m_wantedBitrate = bitrate;
    return true;
}

bool LocalVideoEncoder::setParameter(VideoEncoderParameter parameter, const std::string &value)
{
    const auto self = keepAlive();
    switch (parameter) {
    case VideoEncoderParameter::BitrateModeParameter:
        if (value != "constant" && value != "variable")
            return refuse("there is no bit rate mode \"" + value + "\"");
        if (m_settings.constantBitrate != (value == "constant"))
            m_isStale = true;
        m_settings.constantBitrate = value == "constant";
        return true;
    case VideoEncoderParameter::RotationParameter: {
        const std::optional<int> degrees = quarterTurn(value);
        if (!degrees)
            return refuse("cannot turn a picture by \"" + value + "\" degrees");
        m_input.setRotation(*degrees);
        return true;
    }
    case VideoEncoderParameter::MirrorVerticalParameter:
        if (value != "true" && value != "false")
            return refuse("mirroring is \"true\" or \"false\", not \"" + value + "\"");
        m_input.setMirrored(value == "true");
        return true;
    case VideoEncoderParameter::UnknownParameter0:
    case VideoEncoderParameter::UnknownParameter3:
        break;
    }
    return refuse("there is no parameter " + std::to_string(int(parameter)));
}

// Opens the codec where the next picture demands it.
bool LocalVideoEncoder::makeReady(PictureSize size, bool keyFrame)
{
    const bool sameSize = size.width == m_settings.width && size.height == m_settings.height;
    if (m_isOpen && !m_isStale && sameSize)
        return applyBitrate(keyFrame);
    if (size.width > MaxSide || size.height > MaxSide)
        return refuse("pictures of " + std::to_string(size.width) + 'x' +
                      std::to_string(size.height) + " are too large");
    m_settings.width = size.width;
    m_settings.height = size.height;
    return open();
}

bool LocalVideoEncoder::applyBitrate(bool keyFrame)
{
    if (m_wantedBitrate == m_settings.bitrate)
        return true;
    std::string error;
    switch (m_choice.encoder()->setBitrate(m_wantedBitrate, &error)) {
    case PictureEncoder::BitrateChange::Done:
        m_settings.bitrate = m_wantedBitrate;
        return true;
    case PictureEncoder::BitrateChange::NeedsReopen:
        return isReopenDue(keyFrame) ? open() : true;
    case PictureEncoder::BitrateChange::Failed:
        break;
    }
    m_wantedBitrate = m_settings.bitrate;
    refuse(error);
    return true; // the picture is encoded all the same
}

// A reopened codec begins with a key frame, so where one is due anyway it costs nothing.
bool LocalVideoEncoder::isReopenDue(bool keyFrame) const
{
    constexpr int smallChange = 20; // one part in that
    if (keyFrame || m_sinceKey >= std::int64_t(m_settings.frameRate) * KeyFrameSeconds)
        return true;
    const bool isSmall =
            std::abs(m_wantedBitrate - m_settings.bitrate) < m_settings.bitrate / smallChange;
    const bool isRapid = m_nextIndex < m_settings.frameRate / 2;
    return !isSmall && !isRapid;
}

bool LocalVideoEncoder::open()
{
    std::string error;
    if (m_isOpen) {
        const auto onUnit = [this](const EncodedUnit &unit) { deliver(unit); };
        if (!m_choice.encoder()->finish(onUnit, &error))
            refuse(error);
    }
    m_waiting.clear();
    m_settings.bitrate = m_wantedBitrate;
    m_settings.threads = encoderThreads(m_settings.width, m_settings.height);
    m_isOpen = m_choice.open(m_settings, &error);
    m_isStale = false;
    m_nextIndex = 0;
    m_sinceKey = 0;
    return m_isOpen || refuse(error);
}

bool LocalVideoEncoder::compress(const PictureView &picture, std::int64_t timestamp, bool keyFrame)
{
    const std::int64_t index = m_nextIndex++;
    m_waiting.push_back({ index, timestamp });
    ++m_sinceKey;
    std::string error;
    const auto onUnit = [this](const EncodedUnit &unit) { deliver(unit); };
    if (m_choice.encoder()->encode(picture, index, keyFrame, onUnit, &error))
        return true;
    m_isOpen = false;
    return refuse(error);
}

void LocalVideoEncoder::deliver(const EncodedUnit &unit)
{
    const auto waiting =
            std::find_if(m_waiting.begin(), m_waiting.end(), [&unit](const Waiting &candidate) {
                return candidate.index == unit.index;
            });
    if (waiting == m_waiting.end()) {
        refuse("the codec puts out a picture that it was not given");
        return;
    }
    const auto timestamp = static_cast<unsigned long>(waiting->timestamp); // all bits, as they are
    m_waiting.erase(waiting);
    if (unit.isKeyFrame)
        m_sinceKey = 0;
    const FrameType type = unit.isKeyFrame ? FrameType::Key : FrameType::Delta;
    tell([&unit, timestamp, type](VideoEncoderListener &listener) {
        listener.onEncodedFrame(unit.data, static_cast<unsigned long>(unit.size), timestamp, type);
    });
}

// One call to the listener, if there is one, under its lock.
template <class Call>
void LocalVideoEncoder::tell(const Call &call)
{
    std::unique_lock<std::mutex> lock(m_listenerMutex, std::defer_lock);
    if (!ListenerCallScope::isActive(this)) // else this thread has it already
        lock.lock();
    if (!m_listener)
        return;
    const ListenerCallScope scope(this);
    call(*m_listener);
}

bool LocalVideoEncoder::refuse(const std::string &reason)
{
    const std::string text = std::string(codecName(m_type)) + ": " + reason;
    tell([&text](VideoEncoderListener &listener) { listener.onEncoderError(text); });
    return false;
}

} // namespace Ocelle
} // namespace Veltra
