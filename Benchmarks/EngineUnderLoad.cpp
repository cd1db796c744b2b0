#include "EngineUnderLoad.h"

#include "BareScript.h"
#include "QVLNotificationCenter.h"

#include <filesystem>
#include <fstream>

namespace {

constexpr QVLTimeInterval kLongestWait(60.0);

} // namespace

EngineUnderLoad::EngineUnderLoad(const Workload& workload, const std::string& directory) {
    std::filesystem::create_directories(directory + "/quorvel");
    std::ofstream(directory + "/quorvel/" + kQVLJournalsFile) << workload.journalsText();
    m_engine = QVLQuorvel::initWithDirectory(directory, nullptr, nullptr);
    m_observation = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLOutputsDidChangeNotification, m_engine, [this](const QVLNotification&) { ++m_changeCount; });
    m_engine->performOnQueue(
        [script = workload.script()](QVLQuorvel& engine) { engine.loadScriptWithJSContent(script); });
    m_engine->start();
    m_engine->setInputs(workload.inputs(0));
    waitForChange(0);
    waitForQueue();
}

EngineUnderLoad::~EngineUnderLoad() {
    m_observation.reset();
    m_engine->stop();
    waitForQueue();
}

void EngineUnderLoad::waitForChange(std::size_t changesBefore) const {
    while (m_changeCount == changesBefore) {
        QVLMainRunLoop::mainRunLoop()->runOnce(kLongestWait);
    }
}

void EngineUnderLoad::warmUp(const Workload& workload) const {
    const QVLJSONDictionary inputs[2] = {workload.inputs(0), workload.inputs(1)};
    const auto end = std::chrono::steady_clock::now() + kWarmUp;
    while (std::chrono::steady_clock::now() < end) {
        for (int change = 0; change < 10; ++change) {
            m_engine->setInputs(inputs[change % 2]);
        }
        waitForQueue();
    }
}

void EngineUnderLoad::waitForQueue() const {
    const auto isIdle = std::make_shared<bool>(false);
    m_engine->performOnQueue(
        [isIdle](QVLQuorvel&) { QVLMainRunLoop::mainRunLoop()->post([isIdle] { *isIdle = true; }); });
    while (!*isIdle) {
        QVLMainRunLoop::mainRunLoop()->runOnce(kLongestWait);
    }
}
