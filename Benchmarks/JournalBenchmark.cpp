#include "BareScript.h"
#include "EngineUnderLoad.h"
#include "Measurement.h"
#include "QVLJSONSerialization.h"
#include "TemporaryDirectory.h"

// One event of the journals, saved before it is told and then evaluated, against a bare write of the same bytes and the
// script alone.

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

void bareWrite(benchmark::State& state, const Workload& workload) {
    const TemporaryDirectory directory;
    const std::string bytes = workload.journalsText();
    for (auto _ : state) {
        const auto begin = Clock::now();
        writeBare(bytes, directory.path("file"));
        state.SetIterationTime(secondsSince(begin));
    }
}

void bareWriteAndRun(benchmark::State& state, const Workload& workload) {
    const TemporaryDirectory directory;
    const std::string bytes = workload.journalsText();
    BareScript script(workload.script());
    const JSStringRef inputs =
        BareScript::makeString(QVLJSONSerialization::dataWithJSONObject(workload.inputs(0)).text);
    const JSStringRef journals = BareScript::makeString(bytes);
    for (auto _ : state) {
        const auto begin = Clock::now();
        writeBare(bytes, directory.path("file"));
        benchmark::DoNotOptimize(script.run(inputs, journals));
        state.SetIterationTime(secondsSince(begin));
    }
    JSStringRelease(inputs);
    JSStringRelease(journals);
}

void trigger(benchmark::State& state, const Workload& workload, bool isMainThreadOnly) {
    const TemporaryDirectory directory;
    const EngineUnderLoad load(workload, directory.path());
    const auto event = load.engine().journals()->eventForKey("benchmarked");
    for (auto _ : state) {
        const std::size_t changes = load.changeCount();
        const auto begin = Clock::now();
        event->trigger();
        const double onMainThread = secondsSince(begin);
        load.waitForChange(changes);
        state.SetIterationTime(isMainThreadOnly ? onMainThread : secondsSince(begin));
        load.waitForQueue();
    }
}

} // namespace

void addJournalMeasurements(Measurements& measurements, bool isFull) {
    for (const char* const table : {"One event, until the outputs have changed", "One event, its main-thread part"}) {
        for (const std::size_t records : {50U, 500U, 5000U}) {
            for (const std::size_t rules : {15U, 150U, 1500U}) {
                if (rules != 150 && !isFull) {
                    continue;
                }
                const Workload workload{60, records, rules};
                const bool isMainThreadOnly = std::string(table).ends_with("part");
                measurements.add(
                    {.table = table,
                     .name = std::to_string(records) + " records, " + std::to_string(rules) + " rules",
                     .floor =
                         [=](benchmark::State& state) {
                             isMainThreadOnly ? bareWrite(state, workload) : bareWriteAndRun(state, workload);
                         },
                     .subject = [=](benchmark::State& state) { trigger(state, workload, isMainThreadOnly); }});
            }
        }
    }
}
