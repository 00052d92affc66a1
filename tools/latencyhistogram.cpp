// SPDX-License-Identifier: BSD-3-Clause
#include "latencyhistogram.h"

#include <algorithm>
#include <cmath>

namespace Tool {
namespace {
constexpr qint64 Step = 10; // microseconds
constexpr qint64 Steps = 500000 / Step;
} // namespace

LatencyHistogram::LatencyHistogram()
    : m_counts(Steps + 1)
{
}

void LatencyHistogram::add(qint64 latency)
{
    latency = std::max(latency, qint64(0));
    ++m_counts[static_cast<std::size_t>(std::min(latency / Step, Steps))];
    ++m_count;
    m_sum += latency;
    m_maximum = std::max(m_maximum, latency);
}

double LatencyHistogram::mean() const
{
    return m_count > 0 ? double(m_sum) / double(m_count) : 0;
}

double LatencyHistogram::quantile(double part) const
{
    if (m_count == 0)
        return 0;
    const double wanted = std::max(std::ceil(part * double(m_count)), 1.0);
    double seen = 0;
    for (qint64 i = 0; i < Steps; ++i) {
        seen += m_counts[static_cast<std::size_t>(i)];
        if (seen >= wanted)
            return double(std::min((i + 1) * Step, m_maximum));
    }
    return double(m_maximum);
}

} // namespace Tool
