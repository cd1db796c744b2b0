#include "QVLMainRunLoop.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvel.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

// A host that writes its journals and outputs as fast as it can until somebody kills it. It says on standard output how
// far it has been told that its journals got. With a second argument its script takes memory without end, of which
// there is little.

namespace {

constexpr const char* kScript =
    "quorvel.process = (inputs, journals) => JSON.stringify({ '%isCurrentAppSupported': true, "
    "'%usedInputs': [], '%version': '1.0', echo: journals.repeat(3) });";

constexpr const char* kHungryScript =
    "quorvel.process = inputs => { const kept = []; while (JSON.parse(inputs).isFed) { kept.push([inputs, {}]); } "
    "return '{\"%isCurrentAppSupported\": true}'; };";

/// Leaves room for this much more than the process has taken. The JavaScript engine takes much at its beginning and uses
/// hardly any of it.
void limitMemory(rlim_t more) {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t room = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + more;
    const rlimit limit = {room, room};
    const rlimit noCore = {0, 0};
    ::setrlimit(RLIMIT_AS, &limit);
    ::setrlimit(RLIMIT_CORE, &noCore);
}

void say(std::uint64_t count) {
    const std::string line = std::to_string(count) + "\n";
    // Unbuffered and whole: what was said before the end must be true.
    [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, line.data(), line.size());
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) {
        return 2;
    }
    const bool isHungry = argumentCount > 2;
    const auto engine = QVLQuorvel::initWithDirectory(arguments[1], nullptr, nullptr);
    const auto event = engine->journals()->eventForKey("round");
    const QVLToken token = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLJournalsDidChangeNotification, engine, [&](const QVLNotification&) { say(event->count()); });
    engine->start();
    engine->setInputs({{"a", 1}});
    const auto runLoop = QVLMainRunLoop::mainRunLoop();
    engine->performOnQueue([&](QVLQuorvel& quorvel) {
        quorvel.loadScriptWithJSContent(isHungry ? kHungryScript : kScript);
        if (isHungry) {
            runLoop->post([&] {
                limitMemory(200'000'000);
                engine->setInputs({{"isFed", true}});
            });
        }
    });
    for (;;) {
        event->trigger();
        engine->journals()->flagForKey("flag" + std::to_string(event->count() % 50))->updateFlag(true);
        while (runLoop->runOnce(QVLTimeInterval(0))) {}
    }
}
