// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "bufferpool.h"
#include "cameracounters.h"
#include "capturemodes.h"
#include "driverpicture.h"
#include "driverstream.h"
#include "jpegdecoder.h"
#include "picturememory.h"
#include "pictureproducer.h"
#include "ratemeter.h"
#include "v4l2system.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * Captures from a device, in the driver's own memory where its format allows that.
 *
 * The device is opened by the first call of next() and closed with the producer, both on the
 * capture thread. Its pictures come when they come: none is held back to keep a beat.
 */
class V4l2Producer final : public PictureProducer
{
public:
    using Milliseconds = std::chrono::milliseconds;
    /*! How long a device may deliver nothing. */
    struct Patience
    {
        // Or four of the times between two pictures, if that is more
        Milliseconds first { 10000 }; // some are slow to wake up
        Milliseconds next { 3000 };

        /*! For devices that rest for long, as those with a trigger. */
        static Patience endless();
    };
    struct Target
    {
        std::string id;
        std::string name;
        std::string node;
        CaptureMode mode;
    };

    V4l2Producer(std::shared_ptr<V4l2System> system, Target target, Patience patience);
    ~V4l2Producer() override;

    std::chrono::nanoseconds period() const override;
    std::chrono::nanoseconds catchUp() const override;
    std::optional<std::chrono::nanoseconds> next(const std::atomic<bool> &stop) override;
    std::shared_ptr<GraphicBuffer> picture(std::uint64_t sequence, std::int64_t timestamp) override;
    std::string error() const override { return m_error; }
    void wake() override { m_wakeUp.wake(); }

private:
    using Clock = std::chrono::steady_clock;

    bool begin();
    std::chrono::nanoseconds offset();
    void noteStart();
    bool waitForPicture();
    bool takePicture();
    void holdOff();
    bool drop(std::uint32_t index);
    void countSequence(std::uint32_t sequence);
    bool isPatient();
    std::shared_ptr<GraphicBuffer> uncopied(const DriverStream::Picture &picture);
    std::shared_ptr<GraphicBuffer> converted(const DriverStream::Picture &picture);
    void noteGood();
    bool fail(const V4l2Trouble &trouble);

    const std::shared_ptr<V4l2System> m_system;
    const Target m_target;
    const Patience m_patience;
    const WakeUp m_wakeUp;
    const std::shared_ptr<CameraCounters> m_counters;
    const std::shared_ptr<RateMeter> m_meter;

    std::shared_ptr<DriverStream> m_stream;
    std::shared_ptr<BufferPool<DriverPicture>> m_driverPictures; // one of these two
    std::shared_ptr<BufferPool<PictureMemory>> m_memoryPictures;
    JpegDecoder m_decoder;
    std::optional<DriverStream::Picture> m_current; // dequeued, neither handed out nor requeued
    std::string m_error;

    Clock::time_point m_began {};
    Clock::time_point m_arrived {}; // the current picture
    Clock::duration m_waited {};    // for the device, since the last good picture
    bool m_hasBeat = false;         // the pacer's, with the first picture
    bool m_hasGood = false;         // one came already
    std::uint64_t m_damaged = 0;    // pictures since the last good one
    bool m_hasSequence = false;
    std::uint32_t m_driverSequence = 0; // of the latest picture
    std::uint64_t m_sequence = 0;       // the same, counted on from 0
};

} // namespace Ocelle
} // namespace Veltra
