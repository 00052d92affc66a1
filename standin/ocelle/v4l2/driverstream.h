// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "capturemodes.h"
#include "devicequery.h"
#include "v4l2system.h"
#include "v4l2trouble.h"

#include <linux/videodev2.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * One stream of a device into memory of its driver.
 *
 * That memory is handed out picture by picture and lives until the last one is given back, be the
 * stream stopped by then, the device closed or even unplugged.
 *
 * Threads: the capture thread, but for giveBack(), which any thread may call.
 * Owner:   the producer, and every picture that is out.
 * Errors:  trouble() tells why a function returned false.
 */
class DriverStream
{
public:
    struct Picture
    {
        std::uint32_t index; // of the driver's buffer
        const std::uint8_t *data;
        std::size_t size;   // bytes
        std::size_t memory; // bytes there are, at least size
        std::uint32_t sequence;
        std::int64_t timestamp; // microseconds of CLOCK_MONOTONIC; -1 where it is another clock
        bool isDamaged;         // the driver knows that data is missing
    };
    enum class Dequeued { Picture, Nothing, Failed };

    explicit DriverStream(std::unique_ptr<OpenDevice> device);
    ~DriverStream();
    DriverStream(const DriverStream &) = delete;
    DriverStream &operator=(const DriverStream &) = delete;

    bool start(const CaptureMode &mode);
    /*! Ends it and closes the device; pictures that are out stay valid. */
    void stop();

    V4l2System::Wait wait(int wakeUp, std::chrono::milliseconds timeout);
    /*! Without looking at the device, until that time is over or \a wakeUp is written. */
    void pause(int wakeUp, std::chrono::milliseconds time);
    Dequeued dequeue(Picture &picture);
    /*! Lets the driver use that picture's buffer again. */
    bool requeue(std::uint32_t index);
    /*! Requeues what was given back since. */
    bool requeueReturned();

    /*! Marks a buffer as handed out; false where the driver would have too few left. */
    bool handOut(std::uint32_t index);
    /*! Any thread: a buffer that was handed out is not read any more. */
    void giveBack(std::uint32_t index);

    const OpenDevice &device() const { return *m_device; }
    const v4l2_pix_format &format() const { return m_format; }
    v4l2_fract interval() const { return m_interval; }
    std::size_t bufferCount() const { return m_buffers.size(); }
    const V4l2Trouble &trouble() const { return m_trouble; }

private:
    struct Buffer
    {
        void *memory = nullptr; // null once unmapped
        std::size_t length = 0;
    };

    bool setFormat(const CaptureMode &mode);
    bool setInterval(const CaptureMode &mode);
    bool mapBuffers();
    bool streamOn();
    bool fail(const char *operation, int error);
    bool failWith(const char *operation, const std::string &reason);
    void unmapFreeBuffers();

    std::unique_ptr<OpenDevice> m_device; // empty once stopped
    const std::shared_ptr<V4l2System> m_system;
    v4l2_pix_format m_format {};
    v4l2_fract m_interval {};
    V4l2Trouble m_trouble;
    std::vector<std::uint32_t> m_requeued; // reused for each requeueReturned()
    std::vector<bool> m_queued;            // the driver may fill it

    std::mutex m_mutex;            // guards what follows
    std::vector<Buffer> m_buffers; // changed before start() has returned and after stop()
    std::vector<bool> m_out;       // handed out
    std::size_t m_outCount = 0;
    std::vector<std::uint32_t> m_returned; // to be requeued
    bool m_stopped = false;
};

} // namespace Ocelle
} // namespace Veltra
