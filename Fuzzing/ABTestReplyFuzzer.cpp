#include "Fuzzer.h"
#include "MemoryPlatform.h"
#include "QVLABTestManager.h"
#include "QVLAccount.h"
#include "QVLQuorvel.h"
#include "QVLQuorvelEnvironment.h"

namespace {

/// What of a result is kept. A frequency of 0 means what a missing one means, and is left out.
QVLJSONDictionary kept(const QVLABTestManager& manager) {
    std::vector<QVLJSONDictionary::Entry> results;
    for (const auto& [guid, result] : manager.testResults()) {
        QVLJSONDictionary form = result->toJSON();
        const QVLJSONDictionary participant = form.valueForKey("participant").dictionaryOrEmpty();
        if (!participant.isEmpty() && !participant.hasKey("frequency")) {
            form =
                form.withValueForKey(participant.withValueForKey(QVLABTestFrequencyDaily, "frequency"), "participant");
        }
        results.push_back({guid, form});
    }
    return QVLJSONDictionary(std::move(results));
}

} // namespace

/// The service's reply to a request for participation, through to the outputs and to the next start.
void fuzz(std::string_view text) {
    MemoryPlatform platform;
    const auto environment = std::make_shared<QVLQuorvelEnvironment>();
    environment->setAbtestHost("abtest.example");
    environment->setAbtestGuids({"t"});
    const auto account = QVLAccount::init();
    account->setAccountDirectory("/host");
    const auto manager = QVLABTestManager::initWithEnvironment(environment, account);
    const auto engine = QVLQuorvel::initWithDirectory("/host", nullptr, manager);

    platform.reply = text;
    manager->participateIfNeeded();
    platform.runLoop->runUntilIdle();
    const QVLJSONDictionary results = kept(*manager);
    for (const std::string& key : engine->outputKeys()) {
        expect(engine->outputForKey(key) != nullptr, "there is an output for each key");
    }
    const auto next = QVLABTestManager::initWithEnvironment(environment, account);
    // Only that a test was asked about in vain, without a winning group, need not be remembered.
    const bool isUnknown = results.valueForKey("t").dictionaryOrEmpty().valueForKey("status") == QVLJSONValue(0);
    expect(isUnknown || kept(*next) == results, "what is known of a test is known after the next start");
}
