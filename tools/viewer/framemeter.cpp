// SPDX-License-Identifier: BSD-3-Clause
#include "framemeter.h"

#include <QMutexLocker>

#include <chrono>

namespace Viewer {
namespace {

constexpr qint64 MaxLatency = 10000000; // what is older has a time of another clock

qint64 now()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

class Runnable : public QVideoFilterRunnable
{
public:
    explicit Runnable(const std::shared_ptr<FrameMeter::Store> &store)
        : m_store(store)
    {
    }

    QVideoFrame run(QVideoFrame *input, const QVideoSurfaceFormat &, RunFlags) override
    {
        const qint64 latency = now() - input->startTime();
        m_store->add(latency <= MaxLatency ? latency : -1);
        return *input;
    }

private:
    const std::shared_ptr<FrameMeter::Store> m_store; // outlives the meter where drawing does
};

} // namespace

FrameMeter::FrameMeter(QObject *parent)
    : QAbstractVideoFilter(parent)
    , m_store(std::make_shared<Store>())
{
}

QVideoFilterRunnable *FrameMeter::createFilterRunnable()
{
    return new Runnable(m_store); // the VideoOutput's
}

FrameMeter::Counts FrameMeter::take()
{
    return m_store->take();
}

void FrameMeter::Store::add(qint64 latency)
{
    QMutexLocker locker(&m_mutex);
    ++m_counts.pictures;
    if (latency < 0)
        return;
    ++m_counts.timed;
    m_counts.latencySum += latency;
    m_counts.worstLatency = qMax(m_counts.worstLatency, latency);
}

FrameMeter::Counts FrameMeter::Store::take()
{
    QMutexLocker locker(&m_mutex);
    return std::exchange(m_counts, Counts());
}

} // namespace Viewer
