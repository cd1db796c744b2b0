#include "EngineUnderLoad.h"
#include "QVLJSONSerialization.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvelEnvironment.h"
#include "SilentLogger.h"
#include "Told.h"

#include <unistd.h>

// A host of the library's, to be started and weighed:
//     EngineProgram start DIRECTORY                    from nothing to a fresh answer
//     EngineProgram weigh DIRECTORY ENGINES RUNS SIZES...

namespace {

int start(const std::string& directory) {
    const auto engine = QVLQuorvel::initWithDirectory(directory, nullptr, nullptr);
    if (!engine->outputForKey("variation")) {
        return 1;
    }
    tellStage("readable");
    bool isFresh = false;
    const QVLToken token = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLOutputsDidChangeNotification, engine, [&](const QVLNotification&) { isFresh = true; });
    engine->performOnQueue([script = contentOf(directory + "/script.js")](QVLQuorvel& quorvel) {
        quorvel.loadScriptWithJSContent(script);
    });
    engine->start();
    engine->setInputs(
        QVLJSONSerialization::JSONObjectWithData(contentOf(directory + "/inputs.json")).value.dictionaryOrEmpty());
    while (!isFresh) {
        QVLMainRunLoop::mainRunLoop()->runOnce(QVLTimeInterval(10));
    }
    tellStage("fresh");
    std::cout.flush();
    // What an exit costs is not asked here.
    ::_exit(engine->outputForKey("variation")->integerValue() == 1 ? 0 : 1);
}

void evaluate(const EngineUnderLoad& load, const Workload& workload, long runs) {
    const QVLJSONDictionary inputs[2] = {workload.inputs(0), workload.inputs(1)};
    for (long run = 0; run < runs; ++run) {
        load.engine().setInputs(inputs[run % 2]);
        if (run % 10 == 9) {
            load.waitForQueue();
        }
    }
    load.waitForQueue();
}

int weigh(const std::string& directory, std::size_t engineCount, long runs, const Workload& workload) {
    tellMemory("nothing");
    std::vector<std::unique_ptr<EngineUnderLoad>> loads;
    for (std::size_t engine = 0; engine < engineCount; ++engine) {
        loads.push_back(std::make_unique<EngineUnderLoad>(workload, directory + "/" + std::to_string(engine)));
    }
    tellMemory("ready");
    for (long reading = 0; runs > 0 && reading < kMemoryReadings; ++reading) {
        evaluate(*loads.front(), workload, runs / kMemoryReadings);
        tellMemory("evaluated");
    }
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    QVLQuorvelEnvironment::sharedEnvironment()->setLogger(std::make_shared<SilentLogger>());
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() == 2 && words[0] == "start") {
        return start(words[1]);
    }
    const Workload workload{std::stoul(words.at(4)), std::stoul(words.at(5)), std::stoul(words.at(6))};
    return weigh(words.at(1), std::stoul(words.at(2)), std::stol(words.at(3)), workload);
}
