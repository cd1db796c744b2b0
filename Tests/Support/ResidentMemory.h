#pragma once

#include <cstdint>
#include <fstream>

#include <unistd.h>

/// What the process has in memory now, in bytes.
inline std::int64_t residentMemory() {
    std::int64_t pages = 0;
    std::int64_t residentPages = 0;
    std::ifstream("/proc/self/statm") >> pages >> residentPages;
    return residentPages * ::sysconf(_SC_PAGESIZE);
}

/// The sanitizers keep freed memory back, so that under them nothing can be said about it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsMemoryTelling = false;
#else
inline constexpr bool kIsMemoryTelling = true;
#endif
