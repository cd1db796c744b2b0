#pragma once

#include "QVLCurlTransfer.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// The thread on which a session's transfers run. It loads libcurl with the first one; where that fails, every transfer
/// is reported as failed.
///
/// Called from one thread, the session's. Destroying it drops all transfers without a report; that takes as long as the
/// thread needs to notice, never as long as the network.
class QVLCurlWorker final {
public:
    /// Called on the worker's thread.
    using Report = std::function<void(std::uint64_t number, QVLHTTPReply reply)>;

    QVLCurlWorker(QVLCurlOptions options, Report report);
    QVLCurlWorker(const QVLCurlWorker&) = delete;
    QVLCurlWorker& operator=(const QVLCurlWorker&) = delete;
    ~QVLCurlWorker();

    /// Begins a transfer, which is reported under this number when it ends.
    void start(std::uint64_t number, QVLHTTPRequest request);

    /// Drops a transfer. A report that is on its way still arrives.
    void cancel(std::uint64_t number);

private:
    struct MultiCleanup {
        const QVLCurlLibrary* curl;
        void operator()(CURLM* multi) const { curl->multi_cleanup(multi); }
    };
    using Multi = std::unique_ptr<CURLM, MultiCleanup>;

    void perform(std::function<void()> command);
    void wakeUp();
    [[nodiscard]] bool runCommands();
    void run();
    void transferAndWait();
    void waitForCommands();
    [[nodiscard]] std::string open();
    /// Once there is a multi handle.
    [[nodiscard]] const QVLCurlLibrary& curl() const { return *m_multi.get_deleter().curl; }
    void begin(std::uint64_t number, QVLHTTPRequest request);
    void drop(std::uint64_t number);
    void reportFinished();

    const QVLCurlOptions m_options;
    const Report m_report;

    std::mutex m_mutex;
    /// What the thread waits for while it has no multi handle to wait with.
    std::condition_variable m_wakeUp;
    std::vector<std::function<void()>> m_commands;
    bool m_isStopping = false;
    /// Set by the thread, once and locked; null until libcurl is there.
    Multi m_multi;

    // The worker's thread alone from here on; the transfers go first.
    int m_longestWaitInMilliseconds = 0;
    std::map<std::uint64_t, std::unique_ptr<QVLCurlTransfer>> m_transfers;
    std::thread m_thread;
};
