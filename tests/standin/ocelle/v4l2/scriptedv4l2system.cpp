// SPDX-License-Identifier: BSD-3-Clause
#include "scriptedv4l2system.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace {

constexpr std::uint32_t Capture = V4L2_BUF_TYPE_VIDEO_CAPTURE;
constexpr std::int64_t OffsetStep = 1 << 20;

template <class Argument>
Argument &as(void *argument)
{
    return *static_cast<Argument *>(argument);
}

} // namespace

ScriptedV4l2System::ScriptedV4l2System(std::uint32_t fourcc)
    : m_fourcc(fourcc)
{
}

ScriptedV4l2System::~ScriptedV4l2System()
{
    for (const int device : m_open)
        ::close(device);
}

void ScriptedV4l2System::failOpening(int error)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_openError = error;
}

void ScriptedV4l2System::failIoctl(unsigned long request, int error)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_errors[request] = error;
    m_ready.wake(); // so that DQBUF comes to fail
}

void ScriptedV4l2System::slowDown(unsigned long request, std::chrono::milliseconds time)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_times[request] = time;
}

void ScriptedV4l2System::setCapabilities(std::uint32_t capabilities)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_capabilities = capabilities;
}

void ScriptedV4l2System::setInterval(v4l2_fract interval)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_interval = interval;
}

void ScriptedV4l2System::setMostBuffers(std::uint32_t count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_mostBuffers = count;
}

void ScriptedV4l2System::setControl(std::uint32_t id, std::int32_t value)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_controls[id] = value;
}

void ScriptedV4l2System::setAge(std::chrono::microseconds age)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_age = age;
}

void ScriptedV4l2System::stallWait(std::chrono::milliseconds time)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stall = time;
}

void ScriptedV4l2System::breakDown(int error)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_broken = error;
    m_ready.wake();
}

bool ScriptedV4l2System::deliver(const Bytes &data, std::chrono::seconds patience)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_changed.wait_for(lock, patience, [this] { return m_streaming && !m_queued.empty(); }))
        return false;
    const std::uint32_t index = m_queued.front();
    Mapping *const mapping = mappingOf(index);
    if (!mapping || data.size() > Length)
        return false;
    m_queued.pop_front();
    std::copy(data.begin(), data.end(), mapping->memory->begin());
    m_filled.push_back({ index, std::uint32_t(data.size()), m_sequence++ });
    m_ready.wake();
    return true;
}

void ScriptedV4l2System::deliverHeld()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::uint32_t index = 0;
    while (std::count(m_queued.begin(), m_queued.end(), index))
        ++index;
    m_filled.push_back({ index, std::uint32_t(Length), m_sequence++ });
    m_ready.wake();
}

int ScriptedV4l2System::opens() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_opens;
}

int ScriptedV4l2System::openNow() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_open.size());
}

int ScriptedV4l2System::mappedNow() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_mappings.size());
}

bool ScriptedV4l2System::isStreaming() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_streaming;
}

std::size_t ScriptedV4l2System::queuedNow() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_queued.size();
}

int ScriptedV4l2System::calls(unsigned long request) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_calls.find(request);
    return found == m_calls.end() ? 0 : found->second;
}

int ScriptedV4l2System::waits() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_waits;
}

bool ScriptedV4l2System::isStalled() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_stall.count() != 0;
}

std::vector<std::string> ScriptedV4l2System::misuses() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_misuses;
}

int ScriptedV4l2System::open(const std::string &node)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_opens;
    errno = m_openError;
    if (m_openError)
        return -1;
    // A file in the node's place shows up in /proc as the device would.
    int device = ::open(node.c_str(), O_RDONLY | O_CLOEXEC);
    if (device < 0)
        device = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (device >= 0)
        m_open.push_back(device);
    return device;
}

void ScriptedV4l2System::close(int device)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find(m_open.begin(), m_open.end(), device);
    if (found == m_open.end())
        return misuse("closed twice");
    m_open.erase(found);
    ::close(device);
    if (m_open.empty()) {
        setStreaming(false);
        m_buffers = 0;
    }
}

int ScriptedV4l2System::ioctl(int device, unsigned long request, void *argument)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::chrono::milliseconds time = m_times[request];
    lock.unlock();
    std::this_thread::sleep_for(time);
    lock.lock();
    if (std::find(m_open.begin(), m_open.end(), device) == m_open.end())
        misuse("asked of a closed device");
    ++m_calls[request];
    errno = m_broken ? m_broken : m_errors[request];
    if (errno == 0)
        errno = answer(request, argument);
    return errno ? -1 : 0;
}

void *ScriptedV4l2System::map(int, std::size_t length, std::int64_t offset)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    errno = EINVAL;
    if (length != Length || offset % OffsetStep || offset / OffsetStep >= m_buffers)
        return nullptr;
    auto memory = std::make_unique<Bytes>(length);
    void *const address = memory->data();
    m_mappings[address] = { std::move(memory), std::uint32_t(offset / OffsetStep), m_request };
    return address;
}

void ScriptedV4l2System::unmap(void *memory, std::size_t length)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (length != Length || m_mappings.erase(memory) == 0)
        misuse("unmapped what was not mapped");
}

Veltra::Ocelle::V4l2System::Wait ScriptedV4l2System::wait(int device, int wakeUp,
                                                          std::chrono::milliseconds timeout)
{
    pollfd waited[] = { { device < 0 ? -1 : m_ready.descriptor(), POLLIN, 0 },
                        { wakeUp, POLLIN, 0 } };
    ::poll(waited, 2, int(timeout.count()));
    if (device < 0)
        return waited[1].revents ? Wait::Woken : Wait::TimedOut;
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::chrono::milliseconds stall = m_stall;
    lock.unlock();
    std::this_thread::sleep_for(stall);
    lock.lock();
    m_stall -= stall;
    ++m_waits;
    if (waited[1].revents)
        return Wait::Woken;
    if (m_broken)
        return Wait::Broken;
    return waited[0].revents ? Wait::Ready : Wait::TimedOut;
}

int ScriptedV4l2System::answer(unsigned long request, void *argument)
{
    switch (request) {
    case VIDIOC_QUERYCAP:
        as<v4l2_capability>(argument).device_caps = m_capabilities;
        as<v4l2_capability>(argument).capabilities =
                as<v4l2_capability>(argument).device_caps | V4L2_CAP_DEVICE_CAPS;
        return 0;
    case VIDIOC_G_CTRL: {
        auto &control = as<v4l2_control>(argument);
        const auto found = m_controls.find(control.id);
        control.value = found == m_controls.end() ? 0 : found->second;
        return found == m_controls.end() ? EINVAL : 0;
    }
    case VIDIOC_QUERYCTRL: {
        auto &query = as<v4l2_queryctrl>(argument);
        std::snprintf(reinterpret_cast<char *>(query.name), sizeof query.name, "Control %#x",
                      query.id);
        return m_controls.count(query.id) ? 0 : EINVAL;
    }
    case VIDIOC_S_FMT:
        return setFormat(as<v4l2_format>(argument));
    case VIDIOC_S_PARM:
        as<v4l2_streamparm>(argument).parm.capture.timeperframe = m_interval;
        return 0;
    case VIDIOC_REQBUFS:
        m_buffers = std::min(as<v4l2_requestbuffers>(argument).count, m_mostBuffers);
        as<v4l2_requestbuffers>(argument).count = m_buffers;
        ++m_request;
        return 0;
    case VIDIOC_QUERYBUF:
        as<v4l2_buffer>(argument).length = Length;
        as<v4l2_buffer>(argument).m.offset =
                std::uint32_t(as<v4l2_buffer>(argument).index * OffsetStep);
        return 0;
    case VIDIOC_QBUF:
        return queue(as<v4l2_buffer>(argument));
    case VIDIOC_DQBUF:
        return dequeue(as<v4l2_buffer>(argument));
    case VIDIOC_STREAMON:
    case VIDIOC_STREAMOFF:
        return setStreaming(request == VIDIOC_STREAMON);
    default:
        return enumerate(request, argument);
    }
}

int ScriptedV4l2System::enumerate(unsigned long request, void *argument) const
{
    if (request == VIDIOC_ENUM_FMT && as<v4l2_fmtdesc>(argument).index == 0) {
        as<v4l2_fmtdesc>(argument).pixelformat = m_fourcc;
        return 0;
    }
    if (request == VIDIOC_ENUM_FRAMESIZES && as<v4l2_frmsizeenum>(argument).index == 0) {
        as<v4l2_frmsizeenum>(argument).type = V4L2_FRMSIZE_TYPE_DISCRETE;
        as<v4l2_frmsizeenum>(argument).discrete = { Width, Height };
        return 0;
    }
    if (request == VIDIOC_ENUM_FRAMEINTERVALS && as<v4l2_frmivalenum>(argument).index == 0) {
        as<v4l2_frmivalenum>(argument).type = V4L2_FRMIVAL_TYPE_DISCRETE;
        as<v4l2_frmivalenum>(argument).discrete = { 1, 30 };
        return 0;
    }
    return EINVAL;
}

int ScriptedV4l2System::setFormat(v4l2_format &format) const
{
    format.fmt.pix.pixelformat = m_fourcc;
    format.fmt.pix.width = Width;
    format.fmt.pix.height = Height;
    format.fmt.pix.bytesperline = m_fourcc == V4L2_PIX_FMT_MJPEG ? 0 : Width;
    format.fmt.pix.sizeimage = Length;
    return 0;
}

int ScriptedV4l2System::queue(const v4l2_buffer &buffer)
{
    if (!mappingOf(buffer.index) ||
        std::find(m_queued.begin(), m_queued.end(), buffer.index) != m_queued.end()) {
        misuse("queued buffer " + std::to_string(buffer.index) + " which it has or is none");
        return EINVAL;
    }
    m_queued.push_back(buffer.index);
    m_changed.notify_all();
    return 0;
}

int ScriptedV4l2System::dequeue(v4l2_buffer &buffer)
{
    if (m_filled.empty()) {
        m_ready.drain();
        return EAGAIN;
    }
    const Filled filled = m_filled.front();
    m_filled.pop_front();
    if (m_filled.empty())
        m_ready.drain();
    const std::chrono::microseconds stamp =
            std::chrono::duration_cast<std::chrono::microseconds>(
                    std::chrono::steady_clock::now().time_since_epoch()) -
            m_age;
    buffer.index = filled.index;
    buffer.bytesused = filled.size;
    buffer.sequence = filled.sequence;
    buffer.flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    buffer.timestamp = { stamp.count() / 1000000, stamp.count() % 1000000 };
    return 0;
}

int ScriptedV4l2System::setStreaming(bool on)
{
    m_streaming = on;
    if (!on) {
        m_queued.clear();
        m_filled.clear();
        m_sequence = 0;
    }
    m_changed.notify_all();
    return 0;
}

ScriptedV4l2System::Mapping *ScriptedV4l2System::mappingOf(std::uint32_t index)
{
    // Those of earlier streams are only kept for who still reads them.
    for (auto &mapping : m_mappings) {
        if (mapping.second.index == index && mapping.second.request == m_request)
            return &mapping.second;
    }
    return nullptr;
}
