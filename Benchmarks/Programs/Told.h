#pragma once

#include <chrono>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

// What the programs have in common: reading whole files, and telling the benchmarks how far they are.

inline std::string contentOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// "stage nanoseconds", on the clock that all processes share.
inline void tellStage(const char* stage) {
    std::cout << stage << " " << std::chrono::steady_clock::now().time_since_epoch().count() << std::endl;
}

/// "label resident private", in KiB.
inline void tellMemory(const std::string& label) {
    std::ifstream rollup("/proc/self/smaps_rollup");
    long resident = 0;
    long own = 0;
    for (std::string line; std::getline(rollup, line);) {
        std::istringstream words(line);
        std::string name;
        long size = 0;
        words >> name >> size;
        resident += name == "Rss:" ? size : 0;
        own += name == "Private_Clean:" || name == "Private_Dirty:" ? size : 0;
    }
    std::cout << label << " " << resident << " " << own << std::endl;
}

/// How often the programs tell their memory while they evaluate.
inline constexpr long kMemoryReadings = 10;
