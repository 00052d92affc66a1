// SPDX-License-Identifier: BSD-3-Clause
#include "recordinglistener.h"

#include <algorithm>
#include <utility>

void RecordingListener::onCameraFrame(Buffer buffer)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_busy = true;
        m_stamps.push_back({ buffer->sequence, buffer->timestamp });
        if (m_buffers.size() < buffersToKeep)
            m_buffers.push_back(buffer);
    }
    if (onFrame)
        onFrame(buffer);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_busy = false;
}

void RecordingListener::onCameraError(const std::string &message)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_errors.push_back(message);
    }
    if (onError)
        onError();
}

int RecordingListener::frames() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_stamps.size());
}

std::int64_t RecordingListener::drift(double rate) const
{
    const std::vector<Stamp> all = stamps();
    double earliest[2] = { 1e12, 1e12 };
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double due = double(all[i].sequence) * 1e6 / rate;
        double &half = earliest[i < all.size() / 2 ? 0 : 1];
        half = std::min(half, double(all[i].timestamp - all[0].timestamp) - due);
    }
    return std::int64_t(earliest[1] - earliest[0]);
}

std::vector<RecordingListener::Stamp> RecordingListener::stamps() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_stamps;
}

std::vector<std::string> RecordingListener::errors() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_errors;
}

std::vector<RecordingListener::Buffer> RecordingListener::buffers() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_buffers;
}

void RecordingListener::dropBuffers()
{
    std::vector<Buffer> dropped;
    const std::lock_guard<std::mutex> lock(m_mutex);
    buffersToKeep = 0;
    dropped.swap(m_buffers);
}

bool RecordingListener::isBusy() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_busy;
}
