#include "BareScript.h"
#include "Told.h"

#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

// The same as EngineProgram with the JavaScript engine alone.

namespace {

bool hasVariation(JSContextRef context, JSStringRef answer, double variation) {
    const JSValueRef object = JSValueMakeFromJSONString(context, answer);
    const JSStringRef name = BareScript::makeString("variation");
    const JSValueRef value = JSObjectGetProperty(context, JSValueToObject(context, object, nullptr), name, nullptr);
    JSStringRelease(name);
    return JSValueToNumber(context, value, nullptr) == variation;
}

JSStringRef textOfFile(const std::string& path) {
    return BareScript::makeString(contentOf(path));
}

int start(const std::string& directory) {
    const JSGlobalContextRef context = JSGlobalContextCreate(nullptr);
    if (!hasVariation(context, textOfFile(directory + "/quorvel/OutputsCache.json"), 0)) {
        return 1;
    }
    tellStage("readable");
    BareScript script(contentOf(directory + "/script.js"));
    const JSStringRef answer =
        script.answer(textOfFile(directory + "/inputs.json"), textOfFile(directory + "/quorvel/Journals.json"));
    const bool isFresh = hasVariation(context, answer, 1);
    tellStage("fresh");
    std::cout.flush();
    ::_exit(isFresh ? 0 : 1);
}

int weigh(const std::string& directory, std::size_t machineCount, long runs) {
    tellMemory("nothing");
    std::vector<std::unique_ptr<BareScript>> machines;
    const std::string script = contentOf(directory + "/script.js");
    const JSStringRef inputs = textOfFile(directory + "/inputs.json");
    const JSStringRef journals = textOfFile(directory + "/quorvel/Journals.json");
    for (std::size_t machine = 0; machine < machineCount; ++machine) {
        machines.push_back(std::make_unique<BareScript>(script));
        machines.back()->run(inputs, journals);
    }
    tellMemory("ready");
    for (long reading = 0; runs > 0 && reading < kMemoryReadings; ++reading) {
        for (long run = 0; run < runs / kMemoryReadings; ++run) {
            machines.front()->run(inputs, journals);
        }
        tellMemory("evaluated");
    }
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() == 2 && words[0] == "start") {
        return start(words[1]);
    }
    return weigh(words.at(1), std::stoul(words.at(2)), std::stol(words.at(3)));
}
