#include "TestPlatform.h"

#include "QVLLinuxFileManager.h"
#include "QVLLinuxJavaScriptEngine.h"
#include "QVLLinuxSerialQueue.h"

#include <gtest/gtest.h>

TestPlatform::TestPlatform(Queues queues)
    : fileManager(std::make_shared<FaultyFileManager>(std::make_shared<QVLLinuxFileManager>())),
      javaScriptEngine(std::make_shared<QVLLinuxJavaScriptEngine>()),
      m_queueKind(queues) {}

TestPlatform::~TestPlatform() {
    if (!m_isInstalled) {
        return;
    }
    QVLPlatform::install(nullptr);
    if (m_queueKind == Queues::Real) {
        EXPECT_TRUE(waitForThreads()) << "an engine outlived the test";
    }
}

/// Engines are released on the main thread, and a queue's thread ends some time after its engine, without a post.
bool TestPlatform::waitForThreads() const {
    constexpr QVLTimeInterval kStep(0.01);
    for (QVLTimeInterval waited(0); !m_installed.expired() && waited < SteppedRunLoop::kDeadline; waited += kStep) {
        runLoop->runOnce(kStep);
    }
    return m_installed.expired();
}

void TestPlatform::install() {
    QVLPlatform platform;
    platform.mainRunLoop = runLoop;
    platform.clock = runLoop;
    platform.userDefaults = userDefaults;
    platform.fileManager = fileManager;
    platform.javaScriptEngine = javaScriptEngine;
    platform.bundle = bundle;
    platform.localization = localization;
    platform.makeSerialQueue = [this](std::string label) { return makeQueue(std::move(label)); };
    platform.makeHTTPSession = makeHTTPSession;
    platform.makeReachabilityTarget = reachability.maker();
    const auto installed = std::make_shared<const QVLPlatform>(std::move(platform));
    m_installed = installed;
    QVLPlatform::install(installed);
    m_isInstalled = true;
}

std::vector<std::shared_ptr<SteppedQueue>> TestPlatform::queues() const {
    const std::lock_guard lock(m_mutex);
    return m_queues;
}

void TestPlatform::runUntilIdle() {
    bool hasRun = true;
    while (hasRun) {
        hasRun = runLoop->runUntilIdle();
        for (const auto& queue : queues()) {
            hasRun = queue->runAll() || hasRun;
        }
    }
}

std::unique_ptr<QVLSerialQueue> TestPlatform::makeQueue(std::string label) {
    if (m_queueKind == Queues::Real) {
        return std::make_unique<QVLLinuxSerialQueue>(std::move(label));
    }
    const std::lock_guard lock(m_mutex);
    m_queues.push_back(std::make_shared<SteppedQueue>(std::move(label)));
    return m_queues.back()->makeQueue();
}
