#pragma once

#include <sys/resource.h>

namespace tidwen::bench {

/// The peak memory of a process in KiB; macOS counts it in bytes.
inline long peakKiB(const rusage& usage) {
#ifdef __APPLE__
    return usage.ru_maxrss / 1024;
#else
    return usage.ru_maxrss;
#endif
}

} // namespace tidwen::bench
