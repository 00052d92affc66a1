// SPDX-License-Identifier: BSD-3-Clause
#include "v4l2producer.h"

#include "drivermemory.h"
#include "v4l2format.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::uint32_t MaxLost = 1000; // pictures; a longer gap is a driver that counts otherwise
constexpr std::chrono::milliseconds LongestWait { 100 };
constexpr std::chrono::milliseconds Pause { 10 };
constexpr std::chrono::milliseconds Slack { 5 }; // due a little before it is there: no wait for it

double ratePerSecond(const v4l2_fract &interval)
{
    return interval.numerator ? double(interval.denominator) / interval.numerator : 0;
}

} // namespace

V4l2Producer::Patience V4l2Producer::Patience::endless()
{
    constexpr std::chrono::hours years { 24 * 365 * 10 };
    return { years, years };
}

V4l2Producer::V4l2Producer(std::shared_ptr<V4l2System> system, Target target, Patience patience)
    : m_system(std::move(system))
    , m_target(std::move(target))
    , m_patience(patience)
    , m_counters(CameraCounters::forCamera(m_target.id))
    , m_meter(RateMeter::forCamera(m_target.id))
{
}

V4l2Producer::~V4l2Producer()
{
    if (m_stream)
        m_stream->stop(); // its pictures may keep it for longer
}

std::chrono::nanoseconds V4l2Producer::period() const
{
    return std::chrono::nanoseconds(std::chrono::seconds(1)) / std::max(m_target.mode.rate, 1U);
}

std::chrono::nanoseconds V4l2Producer::catchUp() const
{
    return std::chrono::hours(24); // the device keeps the beat
}

std::optional<std::chrono::nanoseconds> V4l2Producer::next(const std::atomic<bool> &stop)
{
    if (!m_error.empty() || (!m_stream && !begin()))
        return {};
    if (m_current) { // it came too late to be delivered
        noteGood();
        if (!drop(m_current->index))
            return {};
    }
    while (!stop) {
        if (!waitForPicture() || !isPatient())
            return {};
        if (m_current)
            return offset();
    }
    return {};
}

std::shared_ptr<GraphicBuffer> V4l2Producer::picture(std::uint64_t, std::int64_t timestamp)
{
    const DriverStream::Picture picture = *m_current;
    std::shared_ptr<GraphicBuffer> made = m_driverPictures ? uncopied(picture) : converted(picture);
    if (made) {
        made->timestamp = picture.timestamp >= 0 ? picture.timestamp : timestamp;
        made->sequence = m_sequence;
        made->live = true;
    }
    if (m_current) // the driver may have it back at once
        drop(picture.index);
    return made;
}

std::chrono::nanoseconds V4l2Producer::offset()
{
    // As of now and not of the arrival: what a picture took on its way here, as the first one does
    // while code is loaded, would be taken for the beat, and all later ones held back for as long.
    const auto slack = m_hasBeat ? Slack : Milliseconds(0);
    m_hasBeat = true;
    return Clock::now() - m_began - slack;
}

bool V4l2Producer::begin()
{
    m_stream =
            std::make_shared<DriverStream>(std::make_unique<OpenDevice>(m_system, m_target.node));
    if (m_wakeUp.descriptor() < 0)
        return fail({ "does not start", EMFILE, {} });
    if (!m_stream->start(m_target.mode))
        return fail(m_stream->trouble());
    const V4l2Format *const format = V4l2Format::find(m_target.mode.fourcc);
    if (format && format->isCopied)
        m_memoryPictures = std::make_shared<BufferPool<PictureMemory>>();
    else
        m_driverPictures = std::make_shared<BufferPool<DriverPicture>>();
    noteStart();
    return true;
}

void V4l2Producer::noteStart()
{
    m_began = Clock::now();
    CameraRate rate;
    rate.format = V4l2Format::name(m_target.mode.fourcc);
    rate.asked = m_target.mode.rate;
    rate.negotiated = ratePerSecond(m_stream->interval());
    rate.loweringControl = rateLoweringControl(m_stream->device());
    m_meter->begin(rate);
}

/*! Until there is one or something else to look at; false where it cannot go on. */
bool V4l2Producer::waitForPicture()
{
    if (!m_stream->requeueReturned())
        return fail(m_stream->trouble());
    const auto began = Clock::now();
    const V4l2System::Wait result = m_stream->wait(m_wakeUp.descriptor(), LongestWait);
    m_arrived = Clock::now();
    // Not what is beyond: then it was this program that was stopped or had no processor.
    m_waited += std::min<Clock::duration>(m_arrived - began, LongestWait);
    switch (result) {
    case V4l2System::Wait::Woken:
        m_wakeUp.drain();
        return true;
    case V4l2System::Wait::TimedOut:
        return true;
    case V4l2System::Wait::Ready:
        return takePicture();
    case V4l2System::Wait::Broken:
        break;
    }
    // Which error it is only the next call tells.
    return takePicture() && (m_current || fail({ "stopped", EIO, {} }));
}

bool V4l2Producer::takePicture()
{
    DriverStream::Picture picture {};
    switch (m_stream->dequeue(picture)) {
    case DriverStream::Dequeued::Failed:
        return fail(m_stream->trouble());
    case DriverStream::Dequeued::Nothing:
        holdOff();
        return true;
    case DriverStream::Dequeued::Picture:
        break;
    }
    const std::chrono::microseconds arrived =
            std::chrono::duration_cast<std::chrono::microseconds>(m_arrived.time_since_epoch());
    countSequence(picture.sequence);
    m_meter->add(picture.timestamp >= 0 ? picture.timestamp : arrived.count());
    // Some drivers tell when the picture's time would have ended, but it was taken before it came.
    picture.timestamp = std::min<std::int64_t>(picture.timestamp, arrived.count());
    m_current = picture;
    if (!picture.isDamaged)
        return true;
    ++m_damaged;
    m_counters->captured.fetch_add(1, std::memory_order_release);
    m_counters->dropped.fetch_add(1, std::memory_order_release);
    return drop(picture.index);
}

/*! A driver that tells of a picture and has none would keep a processor busy. */
void V4l2Producer::holdOff()
{
    m_stream->pause(m_wakeUp.descriptor(), Pause);
    m_waited += std::min<Clock::duration>(Clock::now() - m_arrived, LongestWait);
}

/*! Gives the driver its picture back. */
bool V4l2Producer::drop(std::uint32_t index)
{
    m_current.reset();
    return m_stream->requeue(index) || fail(m_stream->trouble());
}

void V4l2Producer::countSequence(std::uint32_t sequence)
{
    const std::uint32_t step = m_hasSequence ? sequence - m_driverSequence : 1;
    const std::uint32_t counted = step == 0 || step > MaxLost ? 1 : step;
    m_driverSequence = sequence;
    if (!m_hasSequence) {
        m_hasSequence = true;
        return; // counts from 0
    }
    m_sequence += counted;
    m_counters->captured.fetch_add(counted - 1, std::memory_order_release);
    m_counters->dropped.fetch_add(counted - 1, std::memory_order_release);
}

/*! Whether to wait on; a device that only delivers damaged pictures is as good as silent. */
bool V4l2Producer::isPatient()
{
    const std::chrono::duration<double> usual(4 / ratePerSecond(m_stream->interval()));
    const std::chrono::duration<double> limit(m_hasGood ? m_patience.next : m_patience.first);
    if (m_waited <= std::max(limit, usual))
        return true;
    const auto seconds = std::chrono::duration<double>(m_waited).count();
    std::string time = std::to_string(seconds);
    time.resize(time.find('.') + 2);
    const std::string what = m_damaged ? "delivered only damaged pictures" : "delivered no picture";
    return fail(
            { what + " for " + time + " s", 0,
              "start it anew, and if that does not help choose a smaller size, or unplug it and "
              "plug it in again" });
}

void V4l2Producer::noteGood()
{
    m_hasGood = true;
    m_waited = {};
    m_damaged = 0;
}

std::shared_ptr<GraphicBuffer> V4l2Producer::uncopied(const DriverStream::Picture &picture)
{
    GraphicBuffer layout;
    if (!layOut(m_stream->format(), picture.data, picture.size, layout)) {
        ++m_damaged;
        return {};
    }
    noteGood();
    if (!m_stream->handOut(picture.index))
        return {};
    std::shared_ptr<DriverPicture> made = m_driverPictures->take();
    if (!made) {
        m_stream->giveBack(picture.index);
        m_current.reset(); // it is requeued with the others that were given back
        return {};
    }
    static_cast<GraphicBuffer &>(*made) = layout;
    made->attach(m_stream, picture.index);
    m_current.reset();
    return made;
}

std::shared_ptr<GraphicBuffer> V4l2Producer::converted(const DriverStream::Picture &picture)
{
    std::shared_ptr<PictureMemory> made = m_memoryPictures->take();
    if (!made) {
        noteGood(); // consumers hold them all
        return {};
    }
    if (!convert(m_stream->format(), picture.data, picture.size, m_decoder, *made)) {
        ++m_damaged;
        return {};
    }
    noteGood();
    return made;
}

/*! False, with the reason told by error(). */
bool V4l2Producer::fail(const V4l2Trouble &trouble)
{
    if (m_error.empty()) {
        const std::string holder =
                trouble.isBusy() ? holdersOf(m_target.node, m_stream->device().descriptor()) : "";
        m_error = trouble.sentence(m_target.name, m_target.node, holder);
    }
    return false;
}

} // namespace Ocelle
} // namespace Veltra
