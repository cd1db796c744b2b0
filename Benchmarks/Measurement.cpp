#include "Measurement.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

struct Times {
    std::vector<double> wall;
    std::vector<double> processor;
};

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Keeps each repetition's times, and says on standard error how far things are.
class Collector final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) {
                continue;
            }
            const double iterations = static_cast<double>(run.iterations);
            Times& own = times[run.run_name.function_name];
            own.wall.push_back(run.real_accumulated_time / iterations);
            own.processor.push_back(run.cpu_accumulated_time / iterations);
            std::fprintf(stderr, "    %s\n", run.run_name.function_name.c_str());
        }
    }
    std::map<std::string, Times> times;
};

std::string timeText(double seconds) {
    constexpr double kMicro = 1e-6;
    constexpr double kMilli = 1e-3;
    char text[32];
    if (seconds < kMilli) {
        std::snprintf(text, sizeof text, "%.1f µs", seconds / kMicro);
    } else {
        std::snprintf(text, sizeof text, "%.2f ms", seconds / kMilli);
    }
    return text;
}

std::string ratioText(double subject, double floor) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", floor > 0 ? subject / floor : 0);
    return text;
}

std::string floorName(const Measurement& measurement) {
    return measurement.table + ": " + measurement.name + ": floor";
}

std::string subjectName(const Measurement& measurement) {
    return measurement.table + ": " + measurement.name;
}

} // namespace

void Measurements::run(std::ostream& output, int repetitions) {
    for (const Measurement& measurement : m_measurements) {
        for (const auto& [name, function] : {std::pair(floorName(measurement), measurement.floor),
                                             std::pair(subjectName(measurement), measurement.subject)}) {
            benchmark::RegisterBenchmark(name.c_str(), function)
                ->UseManualTime()
                ->MeasureProcessCPUTime()
                ->Repetitions(repetitions);
        }
    }
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    std::string table;
    for (const Measurement& measurement : m_measurements) {
        const Times floor = collector.times[floorName(measurement)];
        const Times subject = collector.times[subjectName(measurement)];
        if (floor.wall.empty() || subject.wall.empty()) {
            continue;
        }
        if (measurement.table != table) {
            table = measurement.table;
            output << "\n### " << table
                   << "\n\n| Workload | Floor | Quorvel | Ratio | Floor, processor | Quorvel, processor | Ratio |\n"
                      "|---|--:|--:|--:|--:|--:|--:|\n";
        }
        output << "| " << measurement.name << " | " << timeText(median(floor.wall)) << " | "
               << timeText(median(subject.wall)) << " | **" << ratioText(median(subject.wall), median(floor.wall))
               << "** | " << timeText(median(floor.processor)) << " | " << timeText(median(subject.processor))
               << " | **" << ratioText(median(subject.processor), median(floor.processor)) << "** |\n";
    }
}
