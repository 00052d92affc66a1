#pragma once

#include <sys/resource.h>

/*! CPU time of the whole process so far, user and system, in seconds. */
inline double cpuTime()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}
