// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ctime>

/*!
 * CPU time of the whole process so far, user and system, in seconds. The clock counts what the
 * scheduler measured, where getrusage() may count the ticks that happened to fall into the process.
 */
inline double cpuTime()
{
    timespec time {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}
