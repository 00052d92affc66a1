// SPDX-License-Identifier: BSD-3-Clause
#include "previewmeter.h"

#include "cputime.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

namespace {

constexpr quint64 WarmUp = 15;  // pictures
constexpr int Patience = 60000; // milliseconds

} // namespace

PreviewMeter::PreviewMeter(quint64 pictures)
    : m_pictures(pictures)
{
}

void PreviewMeter::start()
{
    m_sinceStart.start();
}

void PreviewMeter::count()
{
    ++m_count;
    if (m_count == 1) {
        m_firstMilliseconds = double(m_sinceStart.nsecsElapsed()) / 1e6;
    } else if (m_count == WarmUp) {
        m_cpu = cpuTime();
        m_sinceWarmUp.start();
    } else if (m_count == WarmUp + m_pictures) {
        m_cpu = cpuTime() - m_cpu;
        m_seconds = double(m_sinceWarmUp.nsecsElapsed()) / 1e9;
        QCoreApplication::quit();
    }
}

bool PreviewMeter::run()
{
    QTimer::singleShot(Patience, qApp, [] { QCoreApplication::exit(1); });
    if (QCoreApplication::exec() == 0)
        return true;
    std::fprintf(stderr, "only %llu pictures came\n", m_count);
    return false;
}

void PreviewMeter::print() const
{
    std::printf("%.1f %.2f %.2f\n", m_cpu * 1e6 / double(m_pictures),
                double(m_pictures) / m_seconds, m_firstMilliseconds);
}
