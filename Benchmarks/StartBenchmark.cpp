#include "Child.h"
#include "Measurement.h"
#include "TemporaryDirectory.h"

#include <filesystem>
#include <sstream>

// From the start of a process to its first answers, against a program that does the same with the JavaScript engine
// alone.

namespace {

/// Seconds of the clock that all processes share, at which the program reached the stage.
double timeOfStage(const std::string& output, const std::string& wanted) {
    std::istringstream words(output);
    std::string stage;
    for (long long nanoseconds = 0; words >> stage >> nanoseconds;) {
        if (stage == wanted) {
            return static_cast<double>(nanoseconds) * 1e-9;
        }
    }
    return 0;
}

void start(benchmark::State& state, const Workload& workload, Program program, const std::string& stage) {
    const TemporaryDirectory directory;
    writeHostFiles(workload, directory.path());
    const std::string cache = directory.path("quorvel/OutputsCache.json");
    std::filesystem::copy_file(cache, directory.path("previous"));
    for (auto _ : state) {
        // The host before has left its own answer.
        std::filesystem::copy_file(directory.path("previous"), cache,
                                   std::filesystem::copy_options::overwrite_existing);
        const auto begin = std::chrono::steady_clock::now().time_since_epoch();
        const std::string output = outputOf(program, {"start", directory.path()});
        state.SetIterationTime(timeOfStage(output, stage) - std::chrono::duration<double>(begin).count());
    }
}

} // namespace

void addStartMeasurements(Measurements& measurements, bool isFull) {
    for (const char* const stage : {"readable", "fresh"}) {
        for (const Workload& workload : {Workload{60, 500, 150}, Workload{6000, 5000, 1500}}) {
            if (workload.inputCount > 60 && !isFull) {
                continue;
            }
            measurements.add({.table = "From the start of the process, against a bare program",
                              .name = std::string(stage[0] == 'r' ? "the previous answer is readable"
                                                                  : "the first fresh answer is there") +
                                      ", " + std::to_string(workload.inputCount) + " inputs",
                              .floor = [=](auto& state) { start(state, workload, Program::Bare, stage); },
                              .subject = [=](auto& state) { start(state, workload, Program::Engine, stage); },
                              .hasProcessorTimes = false});
        }
    }
}
