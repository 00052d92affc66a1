// SPDX-License-Identifier: BSD-3-Clause
#include "patternproducer.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

TestPattern::Planes planesOf(const PictureMemory &picture)
{
    TestPattern::Planes planes {};
    for (std::size_t i = 0; i < planes.size(); ++i)
        planes[i] = { picture.writablePlanes()[i].data, picture.writablePlanes()[i].stride };
    return planes;
}

} // namespace

PatternProducer::PatternProducer(const CameraCapability &capability, PixelFormat format,
                                 const std::string &caption)
    : m_capability(capability)
    , m_format(format)
    , m_pattern(capability.width, capability.height, format, caption)
    , m_pool(std::make_shared<BufferPool<PictureMemory>>())
{
}

std::chrono::nanoseconds PatternProducer::period() const
{
    return std::chrono::nanoseconds(std::chrono::seconds(1)) / m_capability.frameRate;
}

std::chrono::nanoseconds PatternProducer::catchUp() const
{
    return std::chrono::hours(24); // pictures left out cost nothing
}

std::optional<std::chrono::nanoseconds> PatternProducer::next(const std::atomic<bool> &)
{
    // Whole seconds apart, so that the rounding of the rest never adds up.
    const std::int64_t number = m_next++;
    const std::int64_t rate = m_capability.frameRate;
    return std::chrono::seconds(number / rate) +
           std::chrono::nanoseconds(std::chrono::seconds(1)) * (number % rate) / rate;
}

std::shared_ptr<GraphicBuffer> PatternProducer::picture(std::uint64_t sequence,
                                                        std::int64_t timestamp)
{
    std::shared_ptr<PictureMemory> picture = m_pool->take();
    if (!picture)
        return {};
    const bool isNew = picture->allocate(m_capability.width, m_capability.height, m_format);
    const TestPattern::Planes planes = planesOf(*picture);
    if (isNew)
        m_pattern.paintBackground(planes);
    m_pattern.update(planes, sequence, timestamp);
    picture->timestamp = timestamp;
    picture->sequence = sequence;
    picture->live = true;
    return picture;
}

} // namespace Ocelle
} // namespace Veltra
