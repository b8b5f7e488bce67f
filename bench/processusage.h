#pragma once

// What a benchmark reads of its own process: memory and processor time.

#include <sys/resource.h>

namespace lomir::bench {

// The most memory the process has held at once, in megabytes.
inline double peakResidentMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
}

// Processor time so far (user and system); unlike the wall clock it does not count the
// time other programs on a busy machine take.
inline double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& time) { return double(time.tv_sec) + time.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace lomir::bench
