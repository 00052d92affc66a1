// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "bufferpool.h"
#include "camerastatistics.h"
#include "capturecontrol.h"
#include "picturememory.h"
#include "pictureproducer.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

/*! What ScriptedProducers do, and what they did. Set before capture starts; read by any thread. */
struct ProducerScript
{
    std::chrono::nanoseconds period = std::chrono::milliseconds(5);
    int endAfter = -1;            // pictures, then the error; never if negative
    std::string error;            // of the end
    bool failToFill = false;      // picture() fails with the error
    bool lackMemory = false;      // picture() finds none
    std::atomic<int> alive { 0 }; // producers
};

/*! Makes small grey pictures by a script. */
class ScriptedProducer final : public Veltra::Ocelle::PictureProducer
{
public:
    explicit ScriptedProducer(std::shared_ptr<ProducerScript> script);
    ~ScriptedProducer() override;

    std::chrono::nanoseconds period() const override { return m_script->period; }
    std::chrono::nanoseconds catchUp() const override { return std::chrono::hours(1); }
    std::optional<std::chrono::nanoseconds> next(const std::atomic<bool> &stop) override;
    std::shared_ptr<Veltra::Ocelle::GraphicBuffer> picture(std::uint64_t sequence,
                                                           std::int64_t timestamp) override;
    std::string error() const override { return m_error; }

private:
    using Pool = Veltra::Ocelle::BufferPool<Veltra::Ocelle::PictureMemory>;

    const std::shared_ptr<ProducerScript> m_script;
    const std::shared_ptr<Pool> m_pool = std::make_shared<Pool>();
    std::string m_error;
    int m_next = 0;
};

/*! What a scripted camera offers. */
constexpr Veltra::Ocelle::CameraCapability Offered { 16, 16, 500 };

/*! The control of a camera called "Test" that plays \a script. */
std::shared_ptr<Veltra::Ocelle::CaptureControl>
scriptedControl(const std::string &id, const std::shared_ptr<ProducerScript> &script);

/*! Those of the camera called \a id; all zero where there is none. */
Veltra::Ocelle::CameraStatistics statisticsOf(const std::string &id);
