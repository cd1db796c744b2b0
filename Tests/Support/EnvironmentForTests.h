#pragma once

#include "QVLQuorvelEnvironment.h"

#include <fstream>
#include <memory>
#include <string>

/// The shared environment with its files in a directory of the test's, and back as it was afterwards.
class EnvironmentForTests final {
public:
    explicit EnvironmentForTests(const std::string& directory) {
        environment()->setApplicationSupportDirectory(directory);
    }
    EnvironmentForTests(const EnvironmentForTests&) = delete;
    EnvironmentForTests& operator=(const EnvironmentForTests&) = delete;
    ~EnvironmentForTests() {
        environment()->setQuorvelForPreLogin(nullptr);
        environment()->setApplicationSupportDirectory(std::nullopt);
        environment()->setRemoteScriptURL(std::nullopt);
        environment()->setNightlyFeedURL(std::nullopt);
        environment()->setAbtestGuids({});
        environment()->setAbtestHost(std::nullopt);
    }

    QVLQuorvelEnvironment* operator->() const { return environment().get(); }
    [[nodiscard]] static const std::shared_ptr<QVLQuorvelEnvironment>& environment() {
        return QVLQuorvelEnvironment::sharedEnvironment();
    }

    /// Places the developer's key file.
    void unlockDebugTools() const {
        std::ofstream(environment()->debugKeyFilePath().value(), std::ios::binary)
            << std::ifstream(QVL_TEST_DEBUG_KEY_FILE, std::ios::binary).rdbuf();
    }
};
