// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "cputime.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <vector>

/*!
 * Measures pictures on their way through a codec: CPU time of all but the first, the median time of
 * one, how long the first one took, and the process's largest memory.
 *
 * Threads: the one that begins, count() on the one where units come out; never at the same time for
 *          the same picture.
 */
class CodecMeter
{
public:
    using Clock = std::chrono::steady_clock;

    explicit CodecMeter(std::uint64_t pictures)
        : m_began(pictures)
        , m_took(pictures)
    {
    }

    /*! From here on until the first picture is out. */
    void start() { m_start = Clock::now(); }
    void begin(std::uint64_t picture) { m_began[picture] = Clock::now(); }
    void count(std::uint64_t picture, std::size_t bytes)
    {
        const Clock::time_point now = Clock::now();
        m_took[picture] = now - m_began[picture];
        m_bytes += bytes;
        if (picture == 0) {
            m_first = now;
            m_cpu = cpuTime();
        }
        if (picture + 1 == m_took.size())
            m_cpu = cpuTime() - m_cpu;
    }

    /*! Prints microseconds of CPU, median milliseconds, kilobytes of memory, and bytes put out. */
    void print()
    {
        printFigures();
        std::printf(" %llu\n", static_cast<unsigned long long>(m_bytes));
    }
    /*! The same, but with the milliseconds from start() to the first picture as the last. */
    void printWithFirst()
    {
        const std::chrono::duration<double, std::milli> first = m_first - m_start;
        printFigures();
        std::printf(" %.2f\n", first.count());
    }

private:
    void printFigures()
    {
        rusage usage {};
        getrusage(RUSAGE_SELF, &usage);
        std::nth_element(m_took.begin(), m_took.begin() + m_took.size() / 2, m_took.end());
        const std::chrono::duration<double, std::milli> median = m_took[m_took.size() / 2];
        std::printf("%.2f %.4f %ld", m_cpu * 1e6 / double(m_took.size() - 1), median.count(),
                    usage.ru_maxrss);
    }

    Clock::time_point m_start;
    Clock::time_point m_first;
    std::vector<Clock::time_point> m_began;
    std::vector<Clock::duration> m_took;
    std::size_t m_bytes = 0;
    double m_cpu = 0; // seconds
};
