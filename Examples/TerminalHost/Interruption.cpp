#include "Interruption.h"

#include "HostError.h"

#include <chrono>
#include <optional>
#include <utility>

#include <unistd.h>

namespace host {

namespace {

/// What follows sooner is the same interruption: some programs signal both their child and its process group.
constexpr std::chrono::seconds kPatience(1);

/// Wakes the watching thread for its end; from elsewhere it interrupts as the others do.
constexpr int kFarewellSignal = SIGUSR2;

/// True for a program started with nohup, or in the background of a script.
bool isIgnored(int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

} // namespace

Interruption::Interruption(std::function<void(int)> handler) {
    sigemptyset(&m_signals);
    sigaddset(&m_signals, SIGTERM);
    sigaddset(&m_signals, kFarewellSignal);
    for (const int signal : {SIGINT, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&m_signals, signal);
        }
    }
    pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    m_thread = std::thread([this, handler = std::move(handler)] { watch(handler); });
}

Interruption::~Interruption() {
    m_isEnding = true;
    pthread_kill(m_thread.native_handle(), kFarewellSignal);
    m_thread.join();
}

void Interruption::watch(const std::function<void(int)>& handler) const {
    std::optional<std::chrono::steady_clock::time_point> firstTime;
    int signal = 0;
    while (sigwait(&m_signals, &signal) == 0 && !m_isEnding) {
        const auto now = std::chrono::steady_clock::now();
        if (!firstTime) {
            firstTime = now;
            handler(signal);
        } else if (now - *firstTime > kPatience) {
            _exit(kExitSignal + signal);
        }
    }
}

} // namespace host
