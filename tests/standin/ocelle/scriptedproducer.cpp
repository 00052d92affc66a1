// SPDX-License-Identifier: BSD-3-Clause
#include "scriptedproducer.h"

#include <algorithm>
#include <new>
#include <utility>

using namespace Veltra::Ocelle;

ScriptedProducer::ScriptedProducer(std::shared_ptr<ProducerScript> script)
    : m_script(std::move(script))
{
    ++m_script->alive;
}

ScriptedProducer::~ScriptedProducer()
{
    --m_script->alive;
}

std::optional<std::chrono::nanoseconds> ScriptedProducer::next(const std::atomic<bool> &)
{
    if (m_next == m_script->endAfter) {
        m_error = m_script->error;
        return {};
    }
    return m_next++ * m_script->period;
}

std::shared_ptr<GraphicBuffer> ScriptedProducer::picture(std::uint64_t sequence,
                                                         std::int64_t timestamp)
{
    if (m_script->failToFill) {
        m_error = m_script->error;
        return {};
    }
    if (m_script->lackMemory)
        throw std::bad_alloc();
    std::shared_ptr<PictureMemory> picture = m_pool->take();
    if (!picture)
        return {};
    picture->allocate(16, 16, PixelFormat::YU12);
    std::fill_n(picture->writablePlanes()[0].data, 16, std::uint8_t(sequence));
    picture->sequence = sequence;
    picture->timestamp = timestamp;
    return picture;
}

std::shared_ptr<CaptureControl> scriptedControl(const std::string &id,
                                                const std::shared_ptr<ProducerScript> &script)
{
    CameraDescription description;
    description.info.id = id;
    description.info.name = "Test";
    description.capabilities = { Offered };
    description.formats = { PixelFormat::YU12 };
    return std::make_shared<CaptureControl>(description, [script](const CameraCapability &) {
        return std::make_unique<ScriptedProducer>(script);
    });
}

CameraStatistics statisticsOf(const std::string &id)
{
    for (const CameraStatistics &statistics : cameraStatistics()) {
        if (statistics.id == id)
            return statistics;
    }
    return {};
}
