#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

class Stopwatch final {
public:
    [[nodiscard]] double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

using Benchmark = std::function<void(benchmark::State&)>;

/// A benchmark of something that is made and warmed up once, however often the benchmark runs.
template <class Load, class Run, class... Arguments>
Benchmark prepared(Run run, Arguments... arguments) {
    return [run, load = std::make_shared<std::unique_ptr<Load>>(), arguments...](benchmark::State& state) {
        if (!*load) {
            *load = std::make_unique<Load>(arguments...);
        }
        run(state, **load);
    };
}

/// Measures what one call takes, whatever it gives back.
template <class Call>
void measure(benchmark::State& state, Call call) {
    for (auto _ : state) {
        const Stopwatch stopwatch;
        benchmark::DoNotOptimize(call());
        state.SetIterationTime(stopwatch.seconds());
    }
}

/// Something of the library's beside a floor, measured in the same run.
struct Measurement {
    std::string table;
    std::string name;
    Benchmark floor;
    Benchmark subject;
    /// False where the processor does other things besides, or waits.
    bool hasProcessorTimes = true;
};

/// Runs measurements and tells them as Markdown tables of times and ratios.
///
/// Floor and subject take turns, so that a machine that slows down slows both; what is told are the medians of the
/// times and of the ratios of each turn.
class Measurements final {
public:
    void add(Measurement measurement) { m_measurements.push_back(std::move(measurement)); }
    /// Runs everything whose name matches what the benchmark library's flags ask for, and forgets it.
    void run(std::ostream& output, int repetitions);

private:
    std::vector<Measurement> m_measurements;
};

void addEvaluationMeasurements(Measurements& measurements, bool isFull);
void addJournalMeasurements(Measurements& measurements, bool isFull);
void addStartMeasurements(Measurements& measurements, bool isFull);
void addPieceMeasurements(Measurements& measurements);
/// Memory is not repeated: each figure is read once, from a process of its own.
void writeMemoryTables(std::ostream& output, bool isFull);
