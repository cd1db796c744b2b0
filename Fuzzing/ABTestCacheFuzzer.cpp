#include "Fuzzer.h"
#include "MemoryPlatform.h"
#include "QVLABTestManager.h"
#include "QVLAccount.h"
#include "QVLJSONSerialization.h"
#include "QVLQuorvel.h"
#include "QVLQuorvelEnvironment.h"

/// The file of the A/B tests' results. Damaged as it may be, what the library makes of it is saved and read again.
void fuzz(std::string_view text) {
    static constexpr const char* kPath = "/host/quorvel/ABTestResultsCache.json";
    const MemoryPlatform platform;
    const auto environment = std::make_shared<QVLQuorvelEnvironment>();
    const QVLJSONValue document = QVLJSONSerialization::JSONObjectWithData(text).value;
    environment->setAbtestGuids(document.dictionaryOrEmpty().allKeys());
    const auto account = QVLAccount::init();
    account->setAccountDirectory("/host");
    platform.files()[kPath] = text;

    const auto manager = QVLABTestManager::initWithEnvironment(environment, account);
    const auto engine = QVLQuorvel::initWithDirectory("/host", nullptr, manager);
    for (const std::string& key : engine->outputKeys()) {
        expect(engine->outputForKey(key) != nullptr, "there is an output for each key");
    }
    manager->participateIfNeeded();

    // A result may stand under another test's key, and a frequency of 0 is left out: both are settled by a second save.
    for (int count = 0; count < 2; ++count) {
        manager->readTestResults();
        manager->saveTestResults();
    }
    const std::string settled = platform.files()[kPath];
    expect(QVLJSONSerialization::JSONObjectWithData(settled).value.isDictionary(), "results can be saved");
    manager->readTestResults();
    manager->saveTestResults();
    expect(platform.files()[kPath] == settled, "what is saved reads back as the same results");
}
