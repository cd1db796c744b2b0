#pragma once

#include "EnvironmentForTests.h"
#include "QVLMainRunLoop.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvel.h"
#include "QVLScriptManager.h"
#include "TemporaryDirectory.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

/// A host on the platform's own services: the real run loop, network, files, user defaults and JavaScript.
class NativeHost {
public:
    NativeHost() { account->setAccountDirectory(directory.path("account")); }

    /// Makes the account's engine and listens to everything that it posts.
    void makeEngine() {
        engine = environment->quorvelWithAccount(account);
        for (const char* name : {kQVLInputsDidChangeNotification, kQVLOutputsDidChangeNotification,
                                 kQVLJournalsDidChangeNotification, kQVLGoogleAnalyticsEventsDidOccurNotification}) {
            tokens.push_back(QVLNotificationCenter::defaultCenter().addObserver(
                name, engine, [this](const QVLNotification& notification) { receive(notification); }));
        }
        tokens.push_back(QVLNotificationCenter::defaultCenter().addObserver(
            kQVLScriptManagerDidFetchScriptsNotification, engine->scriptManager(),
            [this](const QVLNotification&) { ++fetches; }));
    }
    void dropEngine() {
        tokens.clear();
        engine.reset();
    }

    /// Runs the main run loop until the condition holds; false when it does not within half a minute.
    template <class Condition>
    [[nodiscard]] bool runUntil(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            QVLMainRunLoop::mainRunLoop()->runOnce(std::chrono::milliseconds(100));
        }
        return true;
    }

    [[nodiscard]] std::string text(const char* key) const {
        const auto output = engine->outputForKey(key);
        return output ? output->stringValue().value_or("") : "";
    }
    [[nodiscard]] static std::string contentOf(const std::string& path) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }
    static std::string script(const std::string& version) {
        return "// Quorvel " + version + ".js\nquorvel.process = (inputs, journals) => JSON.stringify({ '%version': '" +
               version +
               "', '%isCurrentAppSupported': true, '%usedInputs': ['plan'], plan: JSON.parse(inputs).plan, source: "
               "'script " +
               version + "', opened: ((JSON.parse(journals).events.opened || {}).count || 0) });\n";
    }

    TemporaryDirectory directory;
    EnvironmentForTests environment{directory.path()};
    std::shared_ptr<QVLAccount> account = QVLAccount::init();
    std::shared_ptr<QVLQuorvel> engine;
    std::vector<QVLToken> tokens;
    std::vector<std::string> notifications;
    std::vector<std::string> changedKeys;
    int fetches = 0;

private:
    void receive(const QVLNotification& notification) {
        notifications.push_back(notification.name);
        if (const auto* keys = notification.value<std::vector<std::string>>(kQVLChangedOutputKeys)) {
            changedKeys = *keys;
        }
    }
};
