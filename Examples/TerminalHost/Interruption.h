#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace host {

/// Tells of Ctrl-C and its kin without ending the program.
///
/// Make it before any other thread: threads inherit that they are not to be interrupted. A second signal, some time
/// later, ends the program on the spot, in case the first one could not.
class Interruption final {
public:
    /// The handler is called once, with the signal's number, on a thread of its own.
    explicit Interruption(std::function<void(int)> handler);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

private:
    void watch(const std::function<void(int)>& handler) const;

    sigset_t m_signals{};
    std::atomic<bool> m_isEnding = false;
    std::thread m_thread;
};

} // namespace host
