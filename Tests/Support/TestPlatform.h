#pragma once

#include "FaultyFileManager.h"
#include "FixedBundle.h"
#include "FixedLocalization.h"
#include "MemoryUserDefaults.h"
#include "QVLPlatform.h"
#include "ScriptedHTTPSession.h"
#include "ScriptedReachability.h"
#include "SteppedQueue.h"
#include "SteppedRunLoop.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// The platform for tests: stepped time, run loop and queues, defaults in memory, real files and real JavaScript.
///
/// In force from `install` until it is destroyed, which has to be after every engine has gone.
class TestPlatform final {
public:
    enum class Queues {
        /// Tasks wait for `runUntilIdle`, or for a step of the queue.
        Stepped,
        /// Tasks run at once, on real threads.
        Real,
    };

    explicit TestPlatform(Queues queues = Queues::Stepped);
    TestPlatform(const TestPlatform&) = delete;
    TestPlatform& operator=(const TestPlatform&) = delete;
    ~TestPlatform();

    // Put another one in its place before `install`, or work with these at any time.
    std::shared_ptr<SteppedRunLoop> runLoop = std::make_shared<SteppedRunLoop>();
    std::shared_ptr<MemoryUserDefaults> userDefaults = std::make_shared<MemoryUserDefaults>();
    std::shared_ptr<FaultyFileManager> fileManager;
    std::shared_ptr<FixedBundle> bundle = std::make_shared<FixedBundle>();
    std::shared_ptr<FixedLocalization> localization = std::make_shared<FixedLocalization>();
    std::shared_ptr<QVLJavaScriptEngine> javaScriptEngine;
    /// What every script and A/B test manager downloads with, unless a maker is put in before `install`.
    std::shared_ptr<ScriptedHTTPSession> httpSession = std::make_shared<ScriptedHTTPSession>(runLoop);
    std::function<std::shared_ptr<QVLHTTPSession>()> makeHTTPSession = [this] { return httpSession; };
    /// No flags, hence nothing reachable, until a test sets some.
    ScriptedReachability reachability;

    void install();

    /// Every stepped queue made so far, in order.
    [[nodiscard]] std::vector<std::shared_ptr<SteppedQueue>> queues() const;
    /// Runs the tasks of all stepped queues and what they post, until nothing is left.
    void runUntilIdle();

private:
    std::unique_ptr<QVLSerialQueue> makeQueue(std::string label);
    [[nodiscard]] bool waitForThreads() const;

    const Queues m_queueKind;
    bool m_isInstalled = false;
    std::weak_ptr<const QVLPlatform> m_installed;
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<SteppedQueue>> m_queues;
};
