#include "Measurement.h"
#include "QVLQuorvelEnvironment.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string_view>

// Measures the library against its floors and prints Markdown tables.

namespace {

std::string processorName() {
    std::ifstream information("/proc/cpuinfo");
    for (std::string line; std::getline(information, line);) {
        if (line.starts_with("model name")) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown processor";
}

bool takeFlag(int& count, char** arguments, std::string_view flag) {
    char** const end = arguments + count;
    char** const kept = std::remove_if(arguments + 1, end, [&](const char* argument) { return argument == flag; });
    count = static_cast<int>(kept - arguments);
    return kept != end;
}

/// Drops every line, so that no terminal is measured.
class SilentLogger final : public QVLLogger {
    void logDebugFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logInfoFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logWarnFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
    void logErrorFile(const char*, std::int32_t, const char*, const QVLObject*, const std::string&) override {}
};

} // namespace

int main(int count, char** arguments) {
    const bool isFull = takeFlag(count, arguments, "--full");
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
        return 2;
    }
    QVLQuorvelEnvironment::sharedEnvironment()->setLogger(std::make_shared<SilentLogger>());
    Measurements measurements;
    addEvaluationMeasurements(measurements, isFull);
    addJournalMeasurements(measurements, isFull);
    std::cout << "Measured on " << processorName() << ", medians of " << (isFull ? "the full mode" : "the short mode")
              << ".\n";
    measurements.run(std::cout, isFull ? 5 : 3);
}
