#include "QVLMainRunLoop.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvel.h"

#include <unistd.h>

#include <cstdint>
#include <string>

// A host that writes its journals and outputs as fast as it can until somebody kills it. It says on standard output how
// far it has been told that its journals got.

namespace {

constexpr const char* kScript =
    "quorvel.process = (inputs, journals) => JSON.stringify({ '%isCurrentAppSupported': true, "
    "'%usedInputs': [], '%version': '1.0', echo: journals.repeat(3) });";

void say(std::uint64_t count) {
    const std::string line = std::to_string(count) + "\n";
    // Unbuffered and whole: what was said before the end must be true.
    [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, line.data(), line.size());
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        return 2;
    }
    const auto engine = QVLQuorvel::initWithDirectory(arguments[1], nullptr, nullptr);
    const auto event = engine->journals()->eventForKey("round");
    const QVLToken token = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLJournalsDidChangeNotification, engine, [&](const QVLNotification&) { say(event->count()); });
    engine->start();
    engine->performOnQueue([](QVLQuorvel& quorvel) { quorvel.loadScriptWithJSContent(kScript); });
    engine->setInputs({{"a", 1}});
    const auto runLoop = QVLMainRunLoop::mainRunLoop();
    for (;;) {
        event->trigger();
        engine->journals()->flagForKey("flag" + std::to_string(event->count() % 50))->updateFlag(true);
        while (runLoop->runOnce(QVLTimeInterval(0))) {}
    }
}
