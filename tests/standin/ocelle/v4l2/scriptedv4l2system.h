// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "v4l2system.h"

#include <linux/videodev2.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/*!
 * A kernel with one kind of capture device, which does what the test says: one format, 64x48, 30
 * pictures per second, buffers as a driver has them.
 *
 * Threads: any.
 * Errors:  what a driver would not forgive is kept in misuses().
 */
class ScriptedV4l2System final : public Veltra::Ocelle::V4l2System
{
public:
    using Bytes = std::vector<std::uint8_t>;
    static constexpr int Width = 64;
    static constexpr int Height = 48;
    static constexpr std::size_t Length = 64 * 48 * 3; // of a buffer

    explicit ScriptedV4l2System(std::uint32_t fourcc = V4L2_PIX_FMT_NV12);
    ~ScriptedV4l2System() override;

    // What it does from now on
    void failOpening(int error);                      // 0: opens again
    void failIoctl(unsigned long request, int error); // 0: works again
    /*! A call that takes that long. */
    void slowDown(unsigned long request, std::chrono::milliseconds time);
    /*! Those of the node; a camera's until this is called. */
    void setCapabilities(std::uint32_t capabilities);
    /*! What it makes of the rate that is asked for, as in the dark. */
    void setInterval(v4l2_fract interval);
    /*! How many buffers there are at most, however many are asked for. */
    void setMostBuffers(std::uint32_t count);
    void setControl(std::uint32_t id, std::int32_t value);
    /*! How long before a picture comes its timestamp is; negative: after that. */
    void setAge(std::chrono::microseconds age);
    /*! The next wait for a picture, as of a program that was stopped meanwhile. */
    void stallWait(std::chrono::milliseconds time);
    /*! Streams and whatever is asked of an open device fail with \a error, as if unplugged. */
    void breakDown(int error);
    /*! Puts a picture into the next queued buffer; false where none is queued within that time. */
    bool deliver(const Bytes &data, std::chrono::seconds patience = std::chrono::seconds(10));

    /*! Tells of a picture in the first buffer that is not queued. */
    void deliverHeld();

    // What was done with it
    int opens() const;     // since it was made
    int openNow() const;   // descriptors
    int mappedNow() const; // buffers
    bool isStreaming() const;
    std::size_t queuedNow() const; // buffers that the driver may fill
    int calls(unsigned long request) const;
    int waits() const;      // for a picture, that have ended
    bool isStalled() const; // or is going to be
    std::vector<std::string> misuses() const;

    int open(const std::string &node) override;
    void close(int device) override;
    int ioctl(int device, unsigned long request, void *argument) override;
    void *map(int device, std::size_t length, std::int64_t offset) override;
    void unmap(void *memory, std::size_t length) override;
    Wait wait(int device, int wakeUp, std::chrono::milliseconds timeout) override;

private:
    struct Filled
    {
        std::uint32_t index;
        std::uint32_t size;
        std::uint32_t sequence;
    };
    struct Mapping
    {
        std::unique_ptr<Bytes> memory;
        std::uint32_t index;
        int request; // which one's buffers it is of
    };

    int answer(unsigned long request, void *argument); // errno
    int enumerate(unsigned long request, void *argument) const;
    int setFormat(v4l2_format &format) const;
    int queue(const v4l2_buffer &buffer);
    int dequeue(v4l2_buffer &buffer);
    int setStreaming(bool on);
    Mapping *mappingOf(std::uint32_t index);
    void misuse(const std::string &what) { m_misuses.push_back(what); }

    const std::uint32_t m_fourcc;
    const Veltra::Ocelle::WakeUp m_ready; // what a device's descriptor tells poll()

    mutable std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    int m_openError = 0;
    int m_broken = 0;
    std::map<unsigned long, int> m_errors;
    std::map<unsigned long, std::chrono::milliseconds> m_times;
    std::map<unsigned long, int> m_calls;
    std::map<std::uint32_t, std::int32_t> m_controls;
    std::uint32_t m_capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    v4l2_fract m_interval { 1, 30 };
    std::chrono::microseconds m_age { 0 };
    std::chrono::milliseconds m_stall { 0 };
    int m_opens = 0;
    int m_waits = 0;
    std::vector<int> m_open;
    std::map<void *, Mapping> m_mappings;
    int m_request = 0; // counts those for buffers
    std::uint32_t m_buffers = 0;
    std::uint32_t m_mostBuffers = 32;
    std::deque<std::uint32_t> m_queued;
    std::deque<Filled> m_filled;
    std::uint32_t m_sequence = 0;
    bool m_streaming = false;
    std::vector<std::string> m_misuses;
};
