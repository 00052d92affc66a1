// SPDX-License-Identifier: BSD-3-Clause
#include "capturerun.h"

#include "librarythread.h"

#include <chrono>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

namespace Veltra {
namespace Ocelle {

CaptureRun::CaptureRun(std::string name, std::shared_ptr<Gate> gate,
                       std::shared_ptr<CameraCounters> counters,
                       std::unique_ptr<PictureProducer> producer)
    : m_name(std::move(name))
    , m_gate(std::move(gate))
    , m_counters(std::move(counters))
    , m_producer(std::move(producer))
{
}

bool CaptureRun::start(std::shared_ptr<CaptureRun> previous)
{
    m_previous = std::move(previous);
    try {
        startThread("OcelleCapture", [self = shared_from_this()] { self->run(); }).detach();
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

void CaptureRun::requestStop()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_ending)
        end({});
}

void CaptureRun::requestSilentStop()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    end({});
}

void CaptureRun::fail(const std::string &message)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_ending)
        end(message);
}

bool CaptureRun::isActive() const
{
    return !m_ending;
}

void CaptureRun::waitUntilFinished()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_done.wait(lock, [this] { return m_finished; });
}

void CaptureRun::run()
{
    if (m_previous)
        m_previous->waitUntilFinished();
    m_previous.reset();
    capture();
    std::unique_ptr<PictureProducer> producer;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        producer.swap(m_producer);
    }
    producer.reset();
    reportError();

    const std::lock_guard<std::mutex> lock(m_mutex);
    m_finished = true;
    m_done.notify_all();
}

void CaptureRun::end(const std::string &error)
{
    m_ending = true;
    m_error = error;
    m_woken.notify_all();
    if (m_producer)
        m_producer->wake();
}

/*! Asks the producer for something, which comes back empty where there is no memory for it. */
template <class Ask>
auto CaptureRun::ask(Ask &&what) -> decltype(what())
{
    try {
        return what();
    } catch (const std::bad_alloc &) {
        fail("Camera \"" + m_name +
             "\" has no memory left for its pictures: choose a smaller size, or close other "
             "programs");
        return {};
    }
}

void CaptureRun::capture()
{
    Pacer pacer(m_producer->period(), m_producer->catchUp());
    for (std::uint64_t sequence = 0; !m_ending; ++sequence) {
        const auto began = Pacer::Clock::now();
        const auto offset = ask([this] { return m_producer->next(m_ending); });
        if (m_ending)
            return;
        if (!offset) {
            fail(m_producer->error());
            return;
        }
        const auto ready = Pacer::Clock::now();
        const Pacer::TimePoint due = pacer.schedule(*offset, ready, ready - began);
        if (!waitUntil(due))
            return;
        deliver(sequence, due, pacer);
    }
}

void CaptureRun::deliver(std::uint64_t sequence, Pacer::TimePoint due, const Pacer &pacer)
{
    const auto now = Pacer::Clock::now();
    m_counters->captured.fetch_add(1, std::memory_order_release);
    if (pacer.isLate(due, now)) {
        m_counters->late.fetch_add(1, std::memory_order_release);
        return;
    }
    const std::chrono::microseconds timestamp =
            std::chrono::duration_cast<std::chrono::microseconds>(now.time_since_epoch());
    std::shared_ptr<GraphicBuffer> buffer =
            ask([&] { return m_producer->picture(sequence, timestamp.count()); });
    if (!buffer) {
        const std::string error = m_producer->error();
        if (!error.empty())
            fail(error);
        m_counters->dropped.fetch_add(1, std::memory_order_release);
        return;
    }
    m_gate->call(
            [&buffer](CameraListener &listener) { listener.onCameraFrame(std::move(buffer)); });
}

bool CaptureRun::waitUntil(Pacer::TimePoint due)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_woken.wait_until(lock, due, [this] { return m_ending.load(); });
    return !m_ending;
}

void CaptureRun::reportError()
{
    std::string error;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        error.swap(m_error);
    }
    if (!error.empty())
        m_gate->call([&error](CameraListener &listener) { listener.onCameraError(error); });
}

} // namespace Ocelle
} // namespace Veltra
