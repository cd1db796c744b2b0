#pragma once

#include "BareScript.h"

#include <condition_variable>
#include <mutex>
#include <thread>

/// The same work without the library: the script runs on a thread of its own, the main thread is told of the answer,
/// and the answer is kept in a file. What a change costs here, no library that does not block its host can undercut.
class BareHost final {
public:
    BareHost(const std::string& script, std::string path);
    BareHost(const BareHost&) = delete;
    BareHost& operator=(const BareHost&) = delete;
    ~BareHost();

    /// Has the script run with the two texts and waits until the main thread knows that it has answered.
    void run(JSStringRef inputs, JSStringRef journals);
    /// Waits until the answer is kept.
    void waitUntilKept();

private:
    void serve(const std::string& script);

    const std::string m_path;
    int m_answered;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    JSStringRef m_inputs = nullptr;
    JSStringRef m_journals = nullptr;
    bool m_isBusy = true;
    bool m_isClosed = false;
    std::thread m_thread;
};
