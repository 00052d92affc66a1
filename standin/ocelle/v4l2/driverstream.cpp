// SPDX-License-Identifier: BSD-3-Clause
#include "driverstream.h"

#include "v4l2format.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::uint32_t WantedBuffers = 8;
constexpr std::uint32_t LeastBuffers = 4;
constexpr std::size_t KeptBuffers = 2; // stay with the driver, which would lose pictures otherwise
constexpr int NoDevice = -1;
constexpr std::uint32_t Capture = V4L2_BUF_TYPE_VIDEO_CAPTURE;

v4l2_buffer mappedBuffer(std::uint32_t index)
{
    v4l2_buffer buffer {};
    buffer.type = Capture;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return buffer;
}

std::int64_t monotonicTime(const v4l2_buffer &buffer)
{
    if ((buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) != V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC)
        return -1;
    return std::int64_t(buffer.timestamp.tv_sec) * 1000000 + buffer.timestamp.tv_usec;
}

} // namespace

DriverStream::DriverStream(std::unique_ptr<OpenDevice> device)
    : m_device(std::move(device))
    , m_system(m_device->sharedSystem())
{
}

DriverStream::~DriverStream()
{
    stop();
}

bool DriverStream::start(const CaptureMode &mode)
{
    if (!m_device->isOpen())
        return fail("does not open", m_device->error());
    return setFormat(mode) && setInterval(mode) && mapBuffers() && streamOn();
}

void DriverStream::stop()
{
    if (!m_device)
        return;
    if (m_device->isOpen()) {
        int type = int(Capture);
        m_device->ioctl(VIDIOC_STREAMOFF, &type);
    }
    unmapFreeBuffers();
    if (m_device->isOpen()) {
        // Frees the device for others even while pictures of it are out.
        v4l2_requestbuffers none {};
        none.type = Capture;
        none.memory = V4L2_MEMORY_MMAP;
        m_device->ioctl(VIDIOC_REQBUFS, &none);
    }
    m_device.reset();
}

V4l2System::Wait DriverStream::wait(int wakeUp, std::chrono::milliseconds timeout)
{
    return m_system->wait(m_device->descriptor(), wakeUp, timeout);
}

void DriverStream::pause(int wakeUp, std::chrono::milliseconds time)
{
    m_system->wait(NoDevice, wakeUp, time);
}

DriverStream::Dequeued DriverStream::dequeue(Picture &picture)
{
    v4l2_buffer buffer = mappedBuffer(0);
    const int error = m_device->ioctl(VIDIOC_DQBUF, &buffer);
    if (error == EAGAIN)
        return Dequeued::Nothing;
    if (error || buffer.index >= m_buffers.size()) {
        fail("stopped", error ? error : EIO);
        return Dequeued::Failed;
    }
    if (!m_queued[buffer.index]) {
        failWith("stopped", "its driver filled a buffer that it had not been given back");
        return Dequeued::Failed;
    }
    m_queued[buffer.index] = false;
    const Buffer &memory = m_buffers[buffer.index];
    const std::size_t size = std::min<std::size_t>(buffer.bytesused, memory.length);
    picture = { buffer.index,
                static_cast<const std::uint8_t *>(memory.memory),
                size,
                memory.length,
                buffer.sequence,
                monotonicTime(buffer),
                (buffer.flags & V4L2_BUF_FLAG_ERROR) != 0 };
    return Dequeued::Picture;
}

bool DriverStream::requeue(std::uint32_t index)
{
    v4l2_buffer buffer = mappedBuffer(index);
    if (const int error = m_device->ioctl(VIDIOC_QBUF, &buffer))
        return fail("stopped", error);
    m_queued[index] = true;
    return true;
}

bool DriverStream::requeueReturned()
{
    m_requeued.clear();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requeued.swap(m_returned);
    }
    bool isGood = true;
    for (const std::uint32_t index : m_requeued)
        isGood = requeue(index) && isGood;
    return isGood;
}

bool DriverStream::handOut(std::uint32_t index)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_outCount + KeptBuffers >= m_buffers.size())
        return false;
    m_out[index] = true;
    ++m_outCount;
    return true;
}

void DriverStream::giveBack(std::uint32_t index)
{
    Buffer unmapped;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_out[index] = false;
        --m_outCount;
        if (m_stopped)
            std::swap(unmapped, m_buffers[index]);
        else
            m_returned.push_back(index); // within the capacity it was given
    }
    if (unmapped.memory)
        m_system->unmap(unmapped.memory, unmapped.length);
}

bool DriverStream::setFormat(const CaptureMode &mode)
{
    v4l2_format format {};
    format.type = Capture;
    format.fmt.pix.width = std::uint32_t(mode.width);
    format.fmt.pix.height = std::uint32_t(mode.height);
    format.fmt.pix.pixelformat = mode.fourcc;
    format.fmt.pix.field = V4L2_FIELD_ANY;
    static const char operation[] = "does not take the format";
    if (const int error = m_device->ioctl(VIDIOC_S_FMT, &format))
        return fail(operation, error);
    m_format = format.fmt.pix;
    if (m_format.pixelformat == mode.fourcc && m_format.width == std::uint32_t(mode.width) &&
        m_format.height == std::uint32_t(mode.height))
        return true;
    return failWith(operation,
                    "it was asked for " + V4l2Format::name(mode.fourcc) + ' ' +
                            std::to_string(mode.width) + 'x' + std::to_string(mode.height) +
                            ", which it had offered, and gave " +
                            V4l2Format::name(m_format.pixelformat) + ' ' +
                            std::to_string(m_format.width) + 'x' + std::to_string(m_format.height));
}

bool DriverStream::setInterval(const CaptureMode &mode)
{
    v4l2_streamparm parameters {};
    parameters.type = Capture;
    parameters.parm.capture.timeperframe = mode.interval;
    m_interval = mode.interval;
    const int error = m_device->ioctl(VIDIOC_S_PARM, &parameters);
    if (error == ENOTTY || error == EINVAL)
        return true; // it has no choice of rates: its only one is what it listed
    if (error)
        return fail("does not take the rate", error);
    if (rateOf(parameters.parm.capture.timeperframe) > 0)
        m_interval = parameters.parm.capture.timeperframe;
    return true;
}

bool DriverStream::mapBuffers()
{
    static const char operation[] = "gives no memory for pictures";
    v4l2_requestbuffers request {};
    request.count = WantedBuffers;
    request.type = Capture;
    request.memory = V4L2_MEMORY_MMAP;
    if (const int error = m_device->ioctl(VIDIOC_REQBUFS, &request))
        return fail(operation, error);
    if (request.count < LeastBuffers)
        return failWith(operation, "it has buffers for " + std::to_string(request.count) +
                                           " only, and streaming takes " +
                                           std::to_string(LeastBuffers));

    const std::lock_guard<std::mutex> lock(m_mutex);
    m_returned.reserve(request.count);
    m_requeued.reserve(request.count);
    m_queued.assign(request.count, false);
    for (std::uint32_t index = 0; index < request.count; ++index) {
        v4l2_buffer buffer = mappedBuffer(index);
        if (const int error = m_device->ioctl(VIDIOC_QUERYBUF, &buffer))
            return fail(operation, error);
        void *const memory = m_system->map(m_device->descriptor(), buffer.length, buffer.m.offset);
        if (!memory)
            return fail(operation, errno);
        m_buffers.push_back({ memory, buffer.length });
        m_out.push_back(false);
    }
    return true;
}

bool DriverStream::streamOn()
{
    static const char operation[] = "does not start streaming";
    for (std::uint32_t index = 0; index < m_buffers.size(); ++index) {
        v4l2_buffer buffer = mappedBuffer(index);
        if (const int error = m_device->ioctl(VIDIOC_QBUF, &buffer))
            return fail(operation, error);
        m_queued[index] = true;
    }
    int type = int(Capture);
    const int error = m_device->ioctl(VIDIOC_STREAMON, &type);
    return error == 0 || fail(operation, error);
}

bool DriverStream::fail(const char *operation, int error)
{
    m_trouble = { operation, error, {} };
    return false;
}

bool DriverStream::failWith(const char *operation, const std::string &reason)
{
    m_trouble = { operation, 0, reason };
    return false;
}

void DriverStream::unmapFreeBuffers()
{
    std::vector<Buffer> unmapped;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
        for (std::size_t index = 0; index < m_buffers.size(); ++index) {
            if (!m_out[index])
                unmapped.push_back(std::exchange(m_buffers[index], Buffer()));
        }
    }
    for (const Buffer &buffer : unmapped) {
        if (buffer.memory)
            m_system->unmap(buffer.memory, buffer.length);
    }
}

} // namespace Ocelle
} // namespace Veltra
