#pragma once

#include "QVLURL.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A server on the loopback interface that answers every request with the same bytes, whether or not they are HTTP.
class RawServer final {
public:
    enum class Afterwards {
        /// Closes the connection behind the bytes.
        Close,
        /// Keeps it open and says no more, until the server is destroyed.
        Stall,
        /// Says the bytes once, and then their last line again and again without end.
        Repeat,
    };

    RawServer(std::string answer, Afterwards afterwards);
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    ~RawServer();

    [[nodiscard]] QVLURL url() const;
    /// Returns when a request has come and has been answered, with its first line and its headers.
    std::string waitForRequest();

    /// An address on the loopback interface where nobody listens.
    [[nodiscard]] static QVLURL refusingURL();

private:
    void serve();
    void serveConnection(int connection);

    const std::string m_answer;
    const Afterwards m_afterwards;
    const int m_listener;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_requestHead;
    bool m_isStopping = false;
    std::vector<int> m_connections;
    std::thread m_thread;
};
