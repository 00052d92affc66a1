// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <ocelle/camera.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/*!
 * Keeps what a camera delivers.
 *
 * Threads: any. The hooks are called on the capture thread, without a lock.
 */
class RecordingListener : public Veltra::Ocelle::CameraListener
{
public:
    using Buffer = std::shared_ptr<Veltra::Ocelle::GraphicBuffer>;
    struct Stamp
    {
        std::uint64_t sequence;
        std::int64_t timestamp; // microseconds
    };

    // Set before capture starts
    std::function<void(Buffer &buffer)> onFrame;
    std::function<void()> onError;
    std::size_t buffersToKeep = 0;

    void onCameraFrame(Buffer buffer) override;
    void onCameraError(const std::string &message) override;
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter, const std::string &) override {}

    int frames() const;
    /*!
     * How much later the pictures came in the second half of the time than in the first, measured
     * by the most punctual one of each, against a steady \a rate in pictures per second. In
     * microseconds; a busy machine makes single pictures late, a clock that drifts makes all.
     */
    std::int64_t drift(double rate) const;
    std::vector<Stamp> stamps() const;
    std::vector<std::string> errors() const;
    std::vector<Buffer> buffers() const;
    void dropBuffers();
    bool isBusy() const; // within a callback

private:
    mutable std::mutex m_mutex; // guards what follows
    std::vector<Stamp> m_stamps;
    std::vector<std::string> m_errors;
    std::vector<Buffer> m_buffers;
    bool m_busy = false;
};
