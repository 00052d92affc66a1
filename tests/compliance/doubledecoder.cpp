// SPDX-License-Identifier: BSD-3-Clause
#include "doubledecoder.h"

#include "doublepicture.h"
#include "doubleplatform.h"

#include <testpattern.h>

#include <chrono>
#include <cstring>
#include <limits>
#include <stdexcept>

using namespace Veltra::Ocelle;

namespace {

constexpr std::size_t MostInside = 2;         // pictures
constexpr std::chrono::milliseconds Late(10); // after flush()

DoubleUnit unitFrom(const unsigned char *data, std::uint64_t size)
{
    DoubleUnit unit {};
    if (size >= sizeof unit)
        std::memcpy(&unit, data, sizeof unit);
    return unit;
}

// As they were seen by the encoder, over the pattern's own.
void paintBars(const TestPattern::Planes &planes, const DoubleUnit &unit)
{
    const int lines = unit.height * 4 / 15;
    for (int y = 0; y < lines; ++y) {
        for (int x = 0; x < unit.width; ++x) {
            const DoubleUnit::Colour &colour = unit.bars[x * DoubleUnit::Bars / unit.width];
            planes[0].data[y * planes[0].stride + x] = colour.y;
            planes[1].data[y / 2 * planes[1].stride + x / 2] = colour.cb;
            planes[2].data[y / 2 * planes[2].stride + x / 2] = colour.cr;
        }
    }
}

std::shared_ptr<GraphicBuffer> painted(const DoubleUnit &unit)
{
    auto picture = std::make_shared<GraphicBuffer>(unit.width, unit.height);
    std::uint8_t *const y = picture->planes.data();
    std::uint8_t *const cb = y + picture->lumaSize();
    const TestPattern::Planes planes { { { y, unit.width },
                                         { cb, unit.width / 2 },
                                         { cb + picture->lumaSize() / 4, unit.width / 2 } } };
    const TestPattern pattern(unit.width, unit.height, PixelFormat::YU12);
    pattern.paintBackground(planes);
    pattern.update(planes, unit.number, 0);
    paintBars(planes, unit);
    return picture;
}

// Mirrored and turned, in grey.
std::shared_ptr<GraphicBuffer> turned(const GraphicBuffer &from, const DoubleUnit &unit)
{
    const bool isAcross = unit.rotation % 180 != 0;
    auto to = std::make_shared<GraphicBuffer>(isAcross ? from.height : from.width,
                                              isAcross ? from.width : from.height);
    for (int y = 0; y < from.height; ++y) {
        for (int x = 0; x < from.width; ++x) {
            const int line = unit.mirrored ? from.height - 1 - y : y;
            int column = x;
            int row = line;
            if (unit.rotation == 90) {
                column = from.height - 1 - line;
                row = x;
            } else if (unit.rotation == 180) {
                column = from.width - 1 - x;
                row = from.height - 1 - line;
            } else if (unit.rotation == 270) {
                column = line;
                row = from.width - 1 - x;
            }
            to->planes[std::size_t(row * to->width + column)] =
                    from.planes[std::size_t(y * from.width + x)];
        }
    }
    return to;
}

} // namespace

std::atomic<int> DoubleDecoder::s_alive { 0 };

DoubleDecoder::DoubleDecoder(CodecType type)
    : m_type(type)
{
    ++s_alive;
}

DoubleDecoder::~DoubleDecoder()
{
    endLate();
    --s_alive;
}

int DoubleDecoder::alive()
{
    return s_alive;
}

bool DoubleDecoder::initialize(DecoderConfig config)
{
    if (config.codecType != m_type && !DoublePlatform::has(Fault::DecoderTakesOthers))
        return refuse("of another kind");
    m_isInitialized = true;
    return true;
}

bool DoubleDecoder::decode(const unsigned char *data, std::uint64_t size, std::uint64_t timestamp,
                           FrameType, void (*release)(void *), void *releaseArg)
{
    const bool isTaken = decodeUnit(data, size, timestamp);
    const bool isKept = isTaken ? unitFrom(data, size).number == 5 &&
                                          DoublePlatform::has(Fault::DecoderKeepsBlock)
                                : DoublePlatform::has(Fault::DecoderKeepsRefused);
    if (!isKept)
        release(releaseArg);
    if (isTaken && DoublePlatform::has(Fault::DecoderReleasesTwice))
        release(releaseArg);
    return isTaken;
}

bool DoubleDecoder::decodeUnit(const unsigned char *data, std::uint64_t size,
                               std::uint64_t timestamp)
{
    if (!m_isInitialized || m_isBroken)
        return refuse("not configured");
    DoubleUnit unit = unitFrom(data, size);
    if (unit.magic != DoubleUnit::Magic || unit.type != std::int32_t(m_type))
        return takeGarbage();
    m_hasKey = m_hasKey || unit.isKey;
    if (!m_hasKey)
        return refuse("waiting for a key frame");
    if (m_lost > 0) {
        --m_lost;
        return true;
    }
    if (unit.number == 5 && DoublePlatform::has(Fault::DecoderRepeats))
        unit.number = 4;
    m_inside.push_back({ unit, timestamp });
    if (m_inside.size() > MostInside) {
        putOut(m_inside.front());
        m_inside.pop_front();
    }
    return true;
}

bool DoubleDecoder::takeGarbage()
{
    m_isBroken = DoublePlatform::has(Fault::DecoderBreaks);
    if (DoublePlatform::has(Fault::DecoderShowsGarbage))
        hand(std::make_shared<GraphicBuffer>(320, 240));
    if (DoublePlatform::has(Fault::DecoderLosesGood))
        m_lost = 3;
    if (m_hasKey && DoublePlatform::has(Fault::DecoderStaysLost))
        m_lost = std::numeric_limits<int>::max();
    if (DoublePlatform::has(Fault::DecoderDropsInside))
        m_inside.clear();
    if (DoublePlatform::has(Fault::DecoderAwaitsKey))
        m_hasKey = false;
    return DoublePlatform::has(Fault::DecoderIsSilent) || refuse("no frame");
}

bool DoubleDecoder::refuse(const std::string &reason)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener)
        m_listener->onDecoderError(reason);
    return false;
}

void DoubleDecoder::flush()
{
    if (DoublePlatform::has(Fault::DecoderFlushPutsOut)) {
        endLate();
        m_late = std::thread([this, inside = m_inside] {
            std::this_thread::sleep_for(Late);
            for (const Waiting &waiting : inside)
                putOut(waiting);
        });
    }
    m_inside.clear();
    m_hasKey = false;
}

void DoubleDecoder::drain()
{
    if (!DoublePlatform::has(Fault::DecoderDrainLoses)) {
        for (const Waiting &waiting : m_inside)
            putOut(waiting);
    }
    m_inside.clear();
    m_hasKey = false;
}

void DoubleDecoder::stop()
{
    endLate();
    m_inside.clear();
    m_isInitialized = false;
    if (DoublePlatform::has(Fault::DecoderThrows))
        throw std::runtime_error("no luck");
}

void DoubleDecoder::endLate()
{
    if (m_late.joinable())
        m_late.join();
}

void DoubleDecoder::putOut(const Waiting &waiting)
{
    const auto upright = painted(waiting.unit);
    const bool isUpright = waiting.unit.rotation == 0 && !waiting.unit.mirrored;
    const auto picture = isUpright ? upright : turned(*upright, waiting.unit);
    constexpr std::int64_t coarse = 1000; // microseconds
    const bool isRounded = DoublePlatform::has(Fault::DecoderRoundsStamps);
    const auto stamp = std::int64_t(waiting.timestamp);
    picture->timestamp = isRounded ? stamp / coarse * coarse : stamp;
    hand(picture);
}

void DoubleDecoder::hand(const std::shared_ptr<GraphicBuffer> &picture)
{
    YCbCrFrame frame {};
    frame.y = picture->planes.data();
    frame.cb = frame.y + picture->lumaSize();
    frame.cr = frame.cb + picture->lumaSize() / 4;
    frame.yStride = std::uint16_t(picture->width);
    frame.cStride = std::uint16_t(picture->width / 2);
    frame.chromaStep = 1;
    frame.width = std::uint16_t(picture->width);
    frame.height = std::uint16_t(picture->height);
    frame.timestamp = picture->timestamp;
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (!m_listener)
        return;
    if (m_type == CodecType::H264)
        m_listener->onDecodedGraphicBuffer(picture);
    else
        m_listener->onDecodedYCbCrFrame(&frame);
}
