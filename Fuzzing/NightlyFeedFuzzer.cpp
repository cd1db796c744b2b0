#include "Fuzzer.h"
#include "MemoryPlatform.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLScriptManager.h"

#include <algorithm>

namespace {

using Scripts = QVLScriptManager::Scripts;

constexpr const char* kDirectory = "/host";
const std::string kDirectoryOfScripts = "/Nightly_Scripts/";

void checkScript(const QVLScript& script) {
    expect(script.version() && script.dateCreated() && script.url(), "a record is complete");
    expect(script.title() == script.version(), "a record is shown by its version");
    static_cast<void>(script.hash());
}

/// A plain name in the directory of the nightly scripts.
bool isInPlace(const std::string& path) {
    const std::size_t found = path.find(kDirectoryOfScripts);
    const std::string name = found == std::string::npos ? "" : path.substr(found + kDirectoryOfScripts.size());
    return path.starts_with(kDirectory) && !name.empty() && name != "." && name != ".." &&
           name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

} // namespace

/// The feed of nightly scripts, fetched and taken over. It names the files that the library then writes.
void fuzz(std::string_view text) {
    MemoryPlatform platform;
    const auto environment = std::make_shared<QVLQuorvelEnvironment>();
    environment->setApplicationSupportDirectory(kDirectory);
    environment->setNightlyFeedURL(QVLURL::fromString("https://scripts.example/feed.json"));
    const auto manager = QVLScriptManager::initWithEnvironment(environment);

    platform.reply = text;
    std::optional<Scripts> scripts;
    manager->fetchNightlyScripts([&](std::optional<Scripts> fetched) { scripts = std::move(fetched); });
    platform.runLoop->runUntilIdle();
    for (const std::shared_ptr<QVLScript>& script : scripts.value_or(Scripts())) {
        checkScript(*script);
    }
    platform.reply = "// Quorvel 1.0.js";
    manager->processNightlyScripts(scripts);
    platform.runLoop->runUntilIdle();
    for (const auto& [path, content] : platform.files()) {
        expect(isInPlace(path), "no feed makes the library write anywhere but in the directory of nightly scripts");
    }
    const std::string cached = platform.files()[manager->cachedNightlyFeedPath().value()];
    expect(!scripts || cached == text, "a feed that was taken over is kept as it came");
}
