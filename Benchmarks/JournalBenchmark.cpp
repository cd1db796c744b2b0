#include "BareScript.h"
#include "EngineUnderLoad.h"
#include "Measurement.h"
#include "QVLJSONSerialization.h"
#include "TemporaryDirectory.h"

// One event of the journals, saved before it is told and then evaluated, against a bare write of the same bytes and the
// script alone.

namespace {

struct WriteLoad {
    explicit WriteLoad(const Workload& workload) : bytes(workload.journalsText()) {}
    void run() { writeBare(bytes, directory.path("file")); }
    const TemporaryDirectory directory;
    const std::string bytes;
};

struct WriteAndScriptLoad : WriteLoad {
    explicit WriteAndScriptLoad(const Workload& workload)
        : WriteLoad(workload),
          script(workload.script()),
          inputs(BareScript::makeString(QVLJSONSerialization::dataWithJSONObject(workload.inputs(0)).text)),
          journals(BareScript::makeString(bytes)) {
        for (const Stopwatch warmUp; warmUp.seconds() < std::chrono::duration<double>(kWarmUp).count();) {
            script.run(inputs, journals);
        }
    }
    WriteAndScriptLoad(const WriteAndScriptLoad&) = delete;
    WriteAndScriptLoad& operator=(const WriteAndScriptLoad&) = delete;
    ~WriteAndScriptLoad() {
        JSStringRelease(inputs);
        JSStringRelease(journals);
    }
    BareScript script;
    JSStringRef inputs;
    JSStringRef journals;
};

struct EventLoad {
    explicit EventLoad(const Workload& workload)
        : load(workload, directory.path()), event(load.engine().journals()->eventForKey("benchmarked")) {
        load.warmUp(workload);
        event->trigger();
        load.waitForQueue();
    }
    const TemporaryDirectory directory;
    const EngineUnderLoad load;
    const std::shared_ptr<QVLJournalEvent> event;
};

void bareWrite(benchmark::State& state, WriteLoad& load) {
    measure(state, [&] {
        load.run();
        return 0;
    });
}

void bareWriteAndScript(benchmark::State& state, WriteAndScriptLoad& load) {
    measure(state, [&] {
        load.run();
        return load.script.run(load.inputs, load.journals);
    });
}

void trigger(benchmark::State& state, EventLoad& events, bool isMainThreadOnly) {
    for (auto _ : state) {
        const std::size_t changes = events.load.changeCount();
        const Stopwatch stopwatch;
        events.event->trigger();
        const double onMainThread = stopwatch.seconds();
        events.load.waitForChange(changes);
        state.SetIterationTime(isMainThreadOnly ? onMainThread : stopwatch.seconds());
        events.load.waitForQueue();
    }
}

void triggerOnMainThread(benchmark::State& state, EventLoad& events) {
    trigger(state, events, /*isMainThreadOnly=*/true);
}

void triggerUntilChanged(benchmark::State& state, EventLoad& events) {
    trigger(state, events, /*isMainThreadOnly=*/false);
}

Measurement measurementOf(const Workload& workload, bool isMainThreadOnly) {
    return {.table = isMainThreadOnly ? "One event, its main-thread part, against a bare write"
                                      : "One event until the outputs have changed, against a bare write and the script",
            .name = std::to_string(workload.recordCount) + " records, " + std::to_string(workload.ruleCount) + " rules",
            .floor = isMainThreadOnly ? prepared<WriteLoad>(bareWrite, workload)
                                      : prepared<WriteAndScriptLoad>(bareWriteAndScript, workload),
            .subject = prepared<EventLoad>(isMainThreadOnly ? triggerOnMainThread : triggerUntilChanged, workload),
            .hasProcessorTimes = !isMainThreadOnly};
}

} // namespace

void addJournalMeasurements(Measurements& measurements, bool isFull) {
    for (const bool isMainThreadOnly : {false, true}) {
        for (const std::size_t records : {50U, 500U, 5000U}) {
            for (const std::size_t rules : {15U, 150U, 1500U}) {
                // The script has no part in what the main thread does.
                if (rules == 150 || (isFull && !isMainThreadOnly)) {
                    measurements.add(measurementOf({60, records, rules}, isMainThreadOnly));
                }
            }
        }
    }
}
