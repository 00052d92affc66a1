// SPDX-License-Identifier: BSD-3-Clause
#include "statistics.h"

#include "standinfunctions.h"

#include <sys/resource.h>

namespace Viewer {
namespace {

constexpr int TickInterval = 1000; // ms

qint64 cpuTime() // microseconds, of all threads
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * qint64(1000000) +
           usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
}

} // namespace

Statistics::Statistics(QObject *parent)
    : QObject(parent)
    , m_cpuAtTick(cpuTime())
{
    m_time.start();
    connect(&m_tick, &QTimer::timeout, this, &Statistics::onTick);
    m_tick.start(TickInterval);
}

void Statistics::setSurface(QAbstractVideoSurface *surface)
{
    if (surface == m_surface)
        return;
    m_surface = surface;
    m_deliveredAtTick = 0;
    emit sourceChanged();
}

void Statistics::onTick()
{
    const double seconds = qMax(1e-3, double(m_time.restart()) / 1e3);
    const qint64 cpu = cpuTime();
    m_cpu = double(cpu - m_cpuAtTick) / 1e4 / seconds;
    m_cpuAtTick = cpu;
    const FrameMeter::Counts counts = m_meter ? m_meter->take() : FrameMeter::Counts();
    m_shown = double(counts.pictures) / seconds;
    m_latency = counts.timed > 0 ? double(counts.latencySum) / double(counts.timed) / 1e3 : -1;
    m_worstLatency = counts.timed > 0 ? double(counts.worstLatency) / 1e3 : -1;
    readOutput(seconds);
    emit changed();
}

void Statistics::readOutput(double seconds)
{
    // Zeros where nothing comes to the surface
    const auto output =
            Tool::statisticsOf(m_surface).value_or(Veltra::Ocelle::VideoOutputStatistics());
    // Counted anew whenever the surface is set on an output.
    const quint64 before = output.delivered < m_deliveredAtTick ? 0 : m_deliveredAtTick;
    m_delivered = double(output.delivered - before) / seconds;
    m_deliveredAtTick = output.delivered;
    // Negative for a moment: it is not read all at once.
    m_queued = qMax(
            0, int(qint64(output.delivered - output.presented - output.dropped - output.refused)));
    m_dropped = int(output.dropped);
    m_missing = int(output.missing);
}

} // namespace Viewer
