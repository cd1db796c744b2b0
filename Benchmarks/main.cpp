#include "Measurement.h"
#include "QVLQuorvelEnvironment.h"
#include "SilentLogger.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string_view>
#include <thread>

// Measures the library against its floors and tells Markdown tables: on standard output and, when one is named with
// --into=FILE, behind the mark in that document.

namespace {

constexpr std::string_view kInto = "--into=";
constexpr std::string_view kMark = "<!-- What follows is written by the benchmarks. -->\n";

std::string processorName() {
    std::ifstream information("/proc/cpuinfo");
    for (std::string line; std::getline(information, line);) {
        if (line.starts_with("model name")) {
            return line.substr(line.find(':') + 2);
        }
    }
    return "unknown processor";
}

/// Takes the argument that begins so out of the arguments; empty when there is none.
std::string taken(int& count, char** arguments, std::string_view beginning) {
    for (int index = 1; index < count; ++index) {
        const std::string argument = arguments[index];
        if (argument.starts_with(beginning)) {
            std::copy(arguments + index + 1, arguments + count, arguments + index);
            --count;
            return argument;
        }
    }
    return "";
}

std::string measured(bool isFull, bool hasMemory) {
    std::ostringstream tables;
    tables << "Measured with `make bench" << (isFull ? " BENCH_FLAGS=--full" : "") << "` on " << processorName() << ", "
           << std::thread::hardware_concurrency() << " processors; medians.\n";
    Measurements measurements;
    addEvaluationMeasurements(measurements, isFull);
    addJournalMeasurements(measurements, isFull);
    addStartMeasurements(measurements, isFull);
    addPieceMeasurements(measurements);
    measurements.run(tables, isFull ? 9 : 5);
    if (hasMemory) {
        writeMemoryTables(tables, isFull);
    }
    return tables.str();
}

int writeInto(const std::string& path, const std::string& tables) {
    std::ostringstream document;
    document << std::ifstream(path).rdbuf();
    const std::size_t mark = document.str().find(kMark);
    if (mark == std::string::npos) {
        std::cerr << path << " has no place for the tables\n";
        return 1;
    }
    std::ofstream(path) << document.str().substr(0, mark + kMark.size()) << "\n" << tables;
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    const bool isFull = !taken(count, arguments, "--full").empty();
    const std::string into = taken(count, arguments, kInto);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
        return 2;
    }
    QVLQuorvelEnvironment::sharedEnvironment()->setLogger(std::make_shared<SilentLogger>());
    const bool isAll = benchmark::GetBenchmarkFilter().empty();
    const std::string tables = measured(isFull, isAll);
    std::cout << tables;
    return into.empty() ? 0 : writeInto(into.substr(kInto.size()), tables);
}
