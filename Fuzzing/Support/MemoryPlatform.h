#pragma once

#include "MemoryUserDefaults.h"
#include "QVLPlatform.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

/// Files by their paths. Every directory is there.
class MemoryFiles final : public QVLFileManager {
public:
    std::map<std::string, std::string> files;

    [[nodiscard]] ItemKind itemKindAtPath(const std::string& path) const override;
    [[nodiscard]] QVLResult<std::string> contentsOfFileAtPath(const std::string& path) const override;
    using QVLFileManager::writeAtomically;
    [[nodiscard]] QVLOutcome writeAtomically(std::string_view data, const std::string& path,
                                             QVLDurability durability) override;
    [[nodiscard]] QVLOutcome removeItemAtPath(const std::string& path) override;
    [[nodiscard]] QVLOutcome createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories) override;
    [[nodiscard]] QVLResult<QVLDate> creationDateOfItemAtPath(const std::string& path) const override;
    [[nodiscard]] QVLResult<std::vector<std::string>> contentsOfDirectoryAtPath(const std::string& path) const override;
    [[nodiscard]] std::string temporaryDirectory() const override { return "/tmp"; }
};

/// The main run loop and all serial queues on the one thread that there is. Time stands still, so timers never fire.
class MemoryRunLoop final : public QVLMainRunLoop, public QVLClock {
public:
    [[nodiscard]] bool isMainThread() const override { return !m_isOnQueue; }
    void post(std::function<void()> task) override { m_posted.push_back(std::move(task)); }
    [[nodiscard]] QVLToken performAfterDelay(QVLTimeInterval /*delay*/, std::function<void()> /*task*/) override {
        return QVLToken([] {});
    }
    [[nodiscard]] QVLToken performRepeatedly(QVLTimeInterval /*interval*/, std::function<void()> /*task*/) override {
        return QVLToken([] {});
    }
    bool runOnce(QVLTimeInterval longestWait) override;
    [[nodiscard]] QVLDate now() const override { return QVLDate(std::chrono::seconds(1'700'000'000)); }

    /// Queues a task of a serial queue.
    void async(std::function<void()> task) { m_queued.push_back(std::move(task)); }
    /// Runs what is posted and queued, and what that posts and queues, until nothing is left.
    void runUntilIdle();

private:
    std::deque<std::function<void()>> m_posted;
    std::deque<std::function<void()>> m_queued;
    bool m_isOnQueue = false;
};

/// A platform without threads, disk, network and JavaScript, which takes microseconds to make. In force from when it is
/// made until it is destroyed.
class MemoryPlatform final {
public:
    MemoryPlatform();
    MemoryPlatform(const MemoryPlatform&) = delete;
    MemoryPlatform& operator=(const MemoryPlatform&) = delete;
    /// Runs what is still waiting.
    ~MemoryPlatform();

    /// What a server answers to every request.
    std::string reply;
    /// What every script answers to every call.
    std::string answer;

    const std::shared_ptr<MemoryRunLoop> runLoop = std::make_shared<MemoryRunLoop>();
    const std::shared_ptr<MemoryFiles> fileManager = std::make_shared<MemoryFiles>();
    const std::shared_ptr<MemoryUserDefaults> userDefaults = std::make_shared<MemoryUserDefaults>();

    [[nodiscard]] std::map<std::string, std::string>& files() const { return fileManager->files; }
};
