#include "Measurement.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <regex>

namespace {

/// Seconds. Many short turns are fairer than a few long ones on a machine that others use too.
constexpr double kShortestTurn = 0.1;

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

std::string ratioText(double ratio) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", ratio);
    return text;
}

std::string floorName(const Measurement& measurement) {
    return measurement.table + ": " + measurement.name + ": floor";
}

std::string subjectName(const Measurement& measurement) {
    return measurement.table + ": " + measurement.name;
}

/// A line of floor, subject and ratio for the times that a figure chooses.
template <class Figure>
std::string cells(const Times& floor, const Times& subject, Figure figure) {
    const std::vector<double> ours = figure(subject);
    const std::vector<double> bare = figure(floor);
    std::vector<double> ratios(std::min(ours.size(), bare.size()));
    std::transform(bare.begin(), bare.begin() + static_cast<std::ptrdiff_t>(ratios.size()), ours.begin(),
                   ratios.begin(), [](double below, double above) { return below > 0 ? above / below : 0; });
    return " " + timeText(median(bare)) + " | " + timeText(median(ours)) + " | **" + ratioText(median(ratios)) + "** |";
}

void writeHead(std::ostream& output, const Measurement& measurement) {
    output << "\n### " << measurement.table << "\n\n| | Floor | Quorvel | Ratio |"
           << (measurement.hasProcessorTimes ? " Floor, processor | Quorvel, processor | Ratio |" : "")
           << "\n|---|--:|--:|--:|" << (measurement.hasProcessorTimes ? "--:|--:|--:|" : "") << "\n";
}

void writeRow(std::ostream& output, const Measurement& measurement, const Collector& collector) {
    const Times& floor = collector.times.at(floorName(measurement));
    const Times& subject = collector.times.at(subjectName(measurement));
    output << "| " << measurement.name << " |" << cells(floor, subject, [](const Times& t) { return t.wall; });
    if (measurement.hasProcessorTimes) {
        output << cells(floor, subject, [](const Times& t) { return t.processor; });
    }
    output << "\n";
}

Collector runInTurns(const Measurement& measurement, int repetitions) {
    Collector collector;
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        for (const auto& [name, function] : {std::pair(floorName(measurement), measurement.floor),
                                             std::pair(subjectName(measurement), measurement.subject)}) {
            benchmark::RegisterBenchmark(name.c_str(), function)
                ->UseManualTime()
                ->MeasureProcessCPUTime()
                ->MinTime(kShortestTurn);
        }
        benchmark::RunSpecifiedBenchmarks(&collector, "all");
        benchmark::ClearRegisteredBenchmarks();
    }
    return collector;
}

} // namespace

void Measurements::run(std::ostream& output, int repetitions) {
    const std::string filter = benchmark::GetBenchmarkFilter();
    std::string table;
    // One by one, so that what one prepares is gone before the next begins.
    for (Measurement& kept : m_measurements) {
        const Measurement measurement = std::move(kept);
        if (!filter.empty() && !std::regex_search(subjectName(measurement), std::regex(filter))) {
            continue;
        }
        const Collector collector = runInTurns(measurement, repetitions);
        if (measurement.table != table) {
            table = measurement.table;
            writeHead(output, measurement);
        }
        writeRow(output, measurement, collector);
    }
    m_measurements.clear();
}
