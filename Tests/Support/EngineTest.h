#pragma once

#include "QVLQuorvel.h"
#include "RecordingLogger.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// An engine without managers in a directory of its own, on the stepped platform, with its log and its notifications
/// kept.
class EngineTest : public ::testing::Test {
protected:
    EngineTest();
    ~EngineTest() override;

    /// Runs work on the engine's queue and then everything that it brought about.
    void onQueue(std::function<void(QVLQuorvel&)> work);
    /// Loads a script's text on the queue; whether it is usable.
    bool load(std::string_view script);
    /// Runs the loaded script once on the given inputs and an empty journal, through a whole evaluation.
    void evaluate();
    void settle() { platform.runUntilIdle(); }

    /// A script whose `process` has this body; the parsed texts are `inputs` and `journals`, and `answer` is an object
    /// with the bookkeeping keys of a good answer.
    [[nodiscard]] static std::string scriptWithBody(std::string_view body, std::string_view version = "1.0");
    /// "action|label" of each status event posted so far.
    [[nodiscard]] std::vector<std::string> statusEvents() const;
    /// The messages of one level since the log was last cleared.
    [[nodiscard]] std::vector<std::string> messages(QVLLogLevel level) const;
    [[nodiscard]] std::vector<std::string> errors() const { return messages(QVLLogLevelError); }
    void clearLog() { static_cast<void>(log->take()); }

    TestPlatform platform;
    RecordedLog log;
    TemporaryDirectory directory;
    std::shared_ptr<QVLQuorvel> engine;
    /// The names of the notifications that the engine posted.
    std::vector<std::string> notifications;
    std::vector<std::shared_ptr<QVLAnalyticsEventInternal>> analyticsEvents;
    /// The keys of the last outputs notification.
    std::vector<std::string> changedOutputKeys;

    void observe(const std::shared_ptr<QVLQuorvel>& observed);

private:
    std::vector<QVLToken> m_tokens;
};
