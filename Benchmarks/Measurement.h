#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

/// Something of the library's beside the floor that nothing could beat, measured in the same run.
struct Measurement {
    std::string table;
    std::string name;
    std::function<void(benchmark::State&)> floor;
    std::function<void(benchmark::State&)> subject;
};

/// Runs measurements and tells them as Markdown tables of times and ratios.
///
/// Floor and subject are repeated in turns, so that a machine that slows down slows both; what is told is the median.
class Measurements final {
public:
    void add(Measurement measurement) { m_measurements.push_back(std::move(measurement)); }
    /// Runs everything whose name matches what the benchmark library's flags ask for.
    void run(std::ostream& output, int repetitions);

private:
    std::vector<Measurement> m_measurements;
};

void addEvaluationMeasurements(Measurements& measurements, bool isFull);
void addJournalMeasurements(Measurements& measurements, bool isFull);
