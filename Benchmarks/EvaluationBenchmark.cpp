#include "BareScript.h"
#include "EngineUnderLoad.h"
#include "Measurement.h"
#include "QVLJSONSerialization.h"
#include "TemporaryDirectory.h"

// One change of the inputs, from the host's call to the host's notification, against the script alone.

namespace {

using Clock = std::chrono::steady_clock;

/// The same two texts of inputs in turn, so that each run has new ones.
struct Texts {
    explicit Texts(const Workload& workload) : journals(BareScript::makeString(workload.journalsText())) {
        for (std::size_t variation = 0; variation < 2; ++variation) {
            inputs[variation] =
                BareScript::makeString(QVLJSONSerialization::dataWithJSONObject(workload.inputs(variation)).text);
        }
    }
    Texts(const Texts&) = delete;
    Texts& operator=(const Texts&) = delete;
    ~Texts() {
        JSStringRelease(inputs[0]);
        JSStringRelease(inputs[1]);
        JSStringRelease(journals);
    }
    JSStringRef inputs[2] = {};
    JSStringRef journals;
};

void bareRun(benchmark::State& state, const Workload& workload) {
    BareScript script(workload.script());
    const Texts texts(workload);
    std::size_t variation = 0;
    for (auto _ : state) {
        const auto begin = Clock::now();
        benchmark::DoNotOptimize(script.run(texts.inputs[++variation % 2], texts.journals));
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
    }
}

// The outputs are saved after they were told; that is waited for outside the time, and counts as processor time.
void changedInputs(benchmark::State& state, const Workload& workload) {
    const TemporaryDirectory directory;
    const EngineUnderLoad load(workload, directory.path());
    const QVLJSONDictionary inputs[2] = {workload.inputs(0), workload.inputs(1)};
    std::size_t variation = 0;
    for (auto _ : state) {
        const std::size_t changes = load.changeCount();
        const auto begin = Clock::now();
        load.engine().setInputs(inputs[++variation % 2]);
        load.waitForChange(changes);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
        load.waitForQueue();
    }
}

std::string nameOf(const Workload& workload) {
    return std::to_string(workload.inputCount) + " inputs, " + std::to_string(workload.recordCount) + " records, " +
           std::to_string(workload.ruleCount) + " rules";
}

} // namespace

void addEvaluationMeasurements(Measurements& measurements, bool isFull) {
    for (const std::size_t inputs : {60U, 600U, 6000U}) {
        for (const std::size_t records : {50U, 500U, 5000U}) {
            for (const std::size_t rules : {15U, 150U, 1500U}) {
                const Workload workload{inputs, records, rules};
                const bool isShort = inputs / 60 == records / 50 && inputs / 60 == rules / 15;
                if (!isFull && !isShort && !(inputs == 60 && records == 500 && rules == 150)) {
                    continue;
                }
                measurements.add({.table = "One change of the inputs",
                                  .name = nameOf(workload),
                                  .floor = [=](benchmark::State& state) { bareRun(state, workload); },
                                  .subject = [=](benchmark::State& state) { changedInputs(state, workload); }});
            }
        }
    }
}
