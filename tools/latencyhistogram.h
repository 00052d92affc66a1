// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QtGlobal>

#include <vector>

namespace Tool {

/*!
 * How long pictures were on their way, in bounded memory for runs of any length.
 *
 * Units: microseconds. Mean and maximum are exact; quantiles to 10 microseconds, up to half a second.
 */
class LatencyHistogram
{
public:
    LatencyHistogram();

    void add(qint64 latency); // a negative one, of a clock that differs, counts as 0

    qint64 count() const { return m_count; }
    double mean() const;
    qint64 maximum() const { return m_maximum; }

    /*! What \a part of all (0 to 1) does not exceed; 0 if there is none. */
    double quantile(double part) const;

private:
    std::vector<quint32> m_counts; // by latency; the last one holds all beyond
    qint64 m_count = 0;
    qint64 m_sum = 0;
    qint64 m_maximum = 0;
};

} // namespace Tool
