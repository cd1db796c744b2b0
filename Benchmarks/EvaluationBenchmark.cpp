#include "BareHost.h"
#include "EngineUnderLoad.h"
#include "Measurement.h"
#include "QVLJSONSerialization.h"
#include "TemporaryDirectory.h"

// One change of the inputs, from the host's call to the host's notification.

namespace {

constexpr const char* kAgainstScript = "One change of the inputs, against the script alone";
constexpr const char* kAgainstHost = "One change of the inputs, against a bare host";

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

template <class Run>
void warmUp(Run run) {
    for (const auto end = std::chrono::steady_clock::now() + kWarmUp; std::chrono::steady_clock::now() < end;) {
        run();
    }
}

struct ScriptLoad {
    explicit ScriptLoad(const Workload& workload) : script(workload.script()), texts(workload) {
        warmUp([this] { run(); });
    }
    std::size_t run() { return script.run(texts.inputs[++variation % 2], texts.journals); }
    BareScript script;
    const Texts texts;
    std::size_t variation = 0;
};

struct HostLoad {
    explicit HostLoad(const Workload& workload) : host(workload.script(), directory.path("answer")), texts(workload) {
        warmUp([this] {
            run();
            host.waitUntilKept();
        });
    }
    void run() { host.run(texts.inputs[++variation % 2], texts.journals); }
    const TemporaryDirectory directory;
    BareHost host;
    const Texts texts;
    std::size_t variation = 0;
};

struct EngineLoad {
    explicit EngineLoad(const Workload& workload)
        : load(workload, directory.path()), inputs{workload.inputs(0), workload.inputs(1)} {
        load.warmUp(workload);
    }
    void run() {
        const std::size_t changes = load.changeCount();
        load.engine().setInputs(inputs[variation++ % 2]);
        load.waitForChange(changes);
    }
    const TemporaryDirectory directory;
    const EngineUnderLoad load;
    const QVLJSONDictionary inputs[2];
    std::size_t variation = 0;
};

void bareScript(benchmark::State& state, ScriptLoad& load) {
    measure(state, [&] { return load.run(); });
}

// Here and below the answer is kept after it was told; that is waited for outside the time, and counts as processor
// time.
void bareHost(benchmark::State& state, HostLoad& load) {
    for (auto _ : state) {
        const Stopwatch stopwatch;
        load.run();
        state.SetIterationTime(stopwatch.seconds());
        load.host.waitUntilKept();
    }
}

void changedInputs(benchmark::State& state, EngineLoad& load) {
    for (auto _ : state) {
        const Stopwatch stopwatch;
        load.run();
        state.SetIterationTime(stopwatch.seconds());
        load.load.waitForQueue();
    }
}

std::string nameOf(const Workload& workload) {
    return std::to_string(workload.inputCount) + " inputs, " + std::to_string(workload.recordCount) + " records, " +
           std::to_string(workload.ruleCount) + " rules";
}

bool isInShortMode(const Workload& workload) {
    const std::size_t size = workload.inputCount / 60;
    const bool isDiagonal = size == workload.recordCount / 50 && size == workload.ruleCount / 15;
    return isDiagonal || (workload.inputCount == 60 && workload.recordCount == 500 && workload.ruleCount == 150);
}

} // namespace

void addEvaluationMeasurements(Measurements& measurements, bool isFull) {
    for (const bool isAgainstHost : {false, true}) {
        for (const std::size_t inputs : {60U, 600U, 6000U}) {
            for (const std::size_t records : {50U, 500U, 5000U}) {
                for (const std::size_t rules : {15U, 150U, 1500U}) {
                    const Workload workload{inputs, records, rules};
                    if (!isFull && !isInShortMode(workload)) {
                        continue;
                    }
                    measurements.add({.table = isAgainstHost ? kAgainstHost : kAgainstScript,
                                      .name = nameOf(workload),
                                      .floor = isAgainstHost ? prepared<HostLoad>(bareHost, workload)
                                                             : prepared<ScriptLoad>(bareScript, workload),
                                      .subject = prepared<EngineLoad>(changedInputs, workload)});
                }
            }
        }
    }
}
