#pragma once

#include "QVLCurlTransfer.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// The thread on which a session's transfers run.
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
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    void perform(std::function<void()> command);
    [[nodiscard]] bool runCommands();
    void run();
    void begin(std::uint64_t number, QVLHTTPRequest request);
    void drop(std::uint64_t number);
    void reportFinished();

    const QVLCurlOptions m_options;
    const Report m_report;

    std::mutex m_mutex;
    std::vector<std::function<void()>> m_commands;
    bool m_isStopping = false;

    // The worker's thread alone from here on; the transfers go first.
    std::unique_ptr<CURLM, MultiCleanup> m_multi;
    const int m_longestWaitInMilliseconds;
    std::map<std::uint64_t, std::unique_ptr<QVLCurlTransfer>> m_transfers;
    std::thread m_thread;
};
