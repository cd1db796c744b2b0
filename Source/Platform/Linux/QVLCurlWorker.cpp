#include "QVLCurlWorker.h"

#include <csignal>
#include <utility>

#include <pthread.h>

namespace {

constexpr long kConnectionsPerHost = 6;
/// A wake-up ends the wait earlier, and so do the transfers' own time-outs.
constexpr int kLongestWaitInMilliseconds = 60'000;
/// Where the process had no file descriptors left for waking the thread up.
constexpr int kWaitWithoutWakeUpInMilliseconds = 100;

/// Writing to a connection that the server has closed raises it, and it would end the host: the TLS library does not
/// ask the kernel to leave it out.
void blockBrokenPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

QVLCurlWorker::QVLCurlWorker(QVLCurlOptions options, Report report)
    : m_options(std::move(options)), m_report(std::move(report)), m_thread([this] { run(); }) {}

QVLCurlWorker::~QVLCurlWorker() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
        wakeUp();
    }
    m_thread.join();
}

void QVLCurlWorker::start(std::uint64_t number, QVLHTTPRequest request) {
    perform([this, number, request = std::move(request)]() mutable { begin(number, std::move(request)); });
}

void QVLCurlWorker::cancel(std::uint64_t number) {
    perform([this, number] { drop(number); });
}

void QVLCurlWorker::perform(std::function<void()> command) {
    const std::lock_guard lock(m_mutex);
    m_commands.push_back(std::move(command));
    wakeUp();
}

/// With the mutex locked.
void QVLCurlWorker::wakeUp() {
    if (m_multi) {
        curl().multi_wakeup(m_multi.get());
    } else {
        m_wakeUp.notify_one();
    }
}

/// False when the thread is to end.
bool QVLCurlWorker::runCommands() {
    std::vector<std::function<void()>> commands;
    {
        const std::lock_guard lock(m_mutex);
        commands.swap(m_commands);
        if (m_isStopping) {
            return false;
        }
    }
    for (const auto& command : commands) {
        command();
    }
    return true;
}

void QVLCurlWorker::run() {
    pthread_setname_np(pthread_self(), "quorvel.http");
    blockBrokenPipeSignal();
    while (runCommands()) {
        if (m_multi) {
            transferAndWait();
        } else {
            waitForCommands();
        }
    }
    while (!m_transfers.empty()) {
        drop(m_transfers.begin()->first);
    }
}

void QVLCurlWorker::transferAndWait() {
    int runningCount = 0;
    curl().multi_perform(m_multi.get(), &runningCount);
    reportFinished();
    curl().multi_poll(m_multi.get(), /*extra_fds=*/nullptr, /*extra_nfds=*/0, m_longestWaitInMilliseconds, nullptr);
}

void QVLCurlWorker::waitForCommands() {
    std::unique_lock lock(m_mutex);
    m_wakeUp.wait(lock, [this] { return m_isStopping || !m_commands.empty(); });
}

/// Makes the multi handle where there is none yet. Empty when there is one, else why not.
std::string QVLCurlWorker::open() {
    if (m_multi) {
        return {};
    }
    const QVLCurlLibrary& curl = m_options.library();
    if (!curl.loadingError().empty()) {
        return curl.loadingError();
    }
    Multi multi(curl.multi_init(), {&curl});
    if (!multi) {
        return "libcurl has no memory for transfers";
    }
    curl.multi_setopt(multi.get(), CURLMOPT_MAX_HOST_CONNECTIONS, kConnectionsPerHost);
    m_longestWaitInMilliseconds =
        curl.multi_wakeup(multi.get()) == CURLM_OK ? kLongestWaitInMilliseconds : kWaitWithoutWakeUpInMilliseconds;
    const std::lock_guard lock(m_mutex);
    m_multi = std::move(multi);
    return {};
}

void QVLCurlWorker::begin(std::uint64_t number, QVLHTTPRequest request) {
    if (const std::string reason = open(); !reason.empty()) {
        m_report(number, {.error = QVLCurlTransfer::error(QVLHTTPErrorCode::Other, reason, request.url)});
        return;
    }
    auto transfer = std::make_unique<QVLCurlTransfer>(curl(), number, std::move(request), m_options);
    if (const auto error = transfer->preparationError()) {
        m_report(number, {.error = error});
        return;
    }
    curl().multi_add_handle(m_multi.get(), transfer->handle());
    m_transfers.emplace(number, std::move(transfer));
}

void QVLCurlWorker::drop(std::uint64_t number) {
    const auto entry = m_transfers.find(number);
    if (entry == m_transfers.end()) {
        return;
    }
    curl().multi_remove_handle(m_multi.get(), entry->second->handle());
    m_transfers.erase(entry);
}

void QVLCurlWorker::reportFinished() {
    int remaining = 0;
    while (const CURLMsg* const message = curl().multi_info_read(m_multi.get(), &remaining)) {
        // The message does not outlive the removal of its handle.
        const CURLcode result = message->data.result;
        QVLCurlTransfer& transfer = QVLCurlTransfer::fromHandle(curl(), message->easy_handle);
        const std::uint64_t number = transfer.number();
        QVLHTTPReply reply = transfer.takeReply(result);
        drop(number);
        m_report(number, std::move(reply));
    }
}
