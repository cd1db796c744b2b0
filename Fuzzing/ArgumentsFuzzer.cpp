#include "Fuzzer.h"
#include "MemoryPlatform.h"
#include "QVLJSONSerialization.h"
#include "QVLLinuxArguments.h"
#include "QVLQuorvel.h"
#include "QVLQuorvelKeys.h"
#include "QVLUTF8.h"

#include <algorithm>

namespace {

/// As the kernel hands over a command line: each argument ends with a NUL.
std::vector<std::string> argumentsFrom(std::string_view text) {
    std::vector<std::string> arguments;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\0'), text.size());
        arguments.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return arguments;
}

} // namespace

/// The host's command line, whose pairs override inputs and outputs.
void fuzz(std::string_view text) {
    const std::vector<std::string> arguments = argumentsFrom(text);
    const QVLJSONDictionary defaults = QVLDefaultsFromArguments(arguments);
    expect(defaults.count() * 2 <= arguments.size(), "each default comes of a pair of arguments");
    expect(!qvl::isValidUTF8(text) || QVLJSONSerialization::isValidJSONObject(defaults), "defaults can be saved");

    const MemoryPlatform platform;
    platform.userDefaults->setArguments(defaults);
    const auto engine = QVLQuorvel::initWithDirectory("/host", nullptr, nullptr);
    expect(engine->disableOutputs() == platform.userDefaults->boolForKey(kQVLDisableQuorvelUserDefaultsKey),
           "the outputs can be switched off");
    engine->setInputs({{"plan", "free"}});
    bool hasAny = false;
    const std::string inputs = engine->gatherInputsJSONHasAny(&hasAny);
    expect(QVLJSONSerialization::JSONObjectWithData(inputs).value.isDictionary(), "a script gets inputs in any case");
    expect(hasAny || !qvl::isValidUTF8(text), "inputs that can be written are handed to the script");
    for (const std::string& key : engine->outputKeys()) {
        expect(engine->outputForKey(key) != nullptr, "there is an output for each key");
    }
}
