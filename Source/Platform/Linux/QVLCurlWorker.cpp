#include "QVLCurlWorker.h"

#include <csignal>
#include <new>
#include <utility>

#include <pthread.h>

namespace {

constexpr long kConnectionsPerHost = 6;
/// A wake-up ends the wait earlier, and so do the transfers' own time-outs.
constexpr int kLongestWaitInMilliseconds = 60'000;
/// Where the process had no file descriptors left for waking the thread up.
constexpr int kWaitWithoutWakeUpInMilliseconds = 100;

CURLM* makeMulti() {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    CURLM* const multi = initialised == CURLE_OK ? curl_multi_init() : nullptr;
    if (!multi) {
        throw std::bad_alloc();
    }
    curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, kConnectionsPerHost);
    return multi;
}

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
    : m_options(std::move(options)),
      m_report(std::move(report)),
      m_multi(makeMulti()),
      m_longestWaitInMilliseconds(curl_multi_wakeup(m_multi.get()) == CURLM_OK ? kLongestWaitInMilliseconds
                                                                               : kWaitWithoutWakeUpInMilliseconds),
      m_thread([this] { run(); }) {}

QVLCurlWorker::~QVLCurlWorker() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    curl_multi_wakeup(m_multi.get());
    m_thread.join();
}

void QVLCurlWorker::start(std::uint64_t number, QVLHTTPRequest request) {
    perform([this, number, request = std::move(request)]() mutable { begin(number, std::move(request)); });
}

void QVLCurlWorker::cancel(std::uint64_t number) {
    perform([this, number] { drop(number); });
}

void QVLCurlWorker::perform(std::function<void()> command) {
    {
        const std::lock_guard lock(m_mutex);
        m_commands.push_back(std::move(command));
    }
    curl_multi_wakeup(m_multi.get());
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
        int runningCount = 0;
        curl_multi_perform(m_multi.get(), &runningCount);
        reportFinished();
        curl_multi_poll(m_multi.get(), /*extra_fds=*/nullptr, /*extra_nfds=*/0, m_longestWaitInMilliseconds, nullptr);
    }
    while (!m_transfers.empty()) {
        drop(m_transfers.begin()->first);
    }
}

void QVLCurlWorker::begin(std::uint64_t number, QVLHTTPRequest request) {
    auto transfer = std::make_unique<QVLCurlTransfer>(number, std::move(request), m_options);
    if (const auto error = transfer->preparationError()) {
        m_report(number, {.error = error});
        return;
    }
    curl_multi_add_handle(m_multi.get(), transfer->handle());
    m_transfers.emplace(number, std::move(transfer));
}

void QVLCurlWorker::drop(std::uint64_t number) {
    const auto entry = m_transfers.find(number);
    if (entry == m_transfers.end()) {
        return;
    }
    curl_multi_remove_handle(m_multi.get(), entry->second->handle());
    m_transfers.erase(entry);
}

void QVLCurlWorker::reportFinished() {
    int remaining = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_multi.get(), &remaining)) {
        // The message does not outlive the removal of its handle.
        const CURLcode result = message->data.result;
        QVLCurlTransfer& transfer = QVLCurlTransfer::fromHandle(message->easy_handle);
        const std::uint64_t number = transfer.number();
        QVLHTTPReply reply = transfer.takeReply(result);
        drop(number);
        m_report(number, std::move(reply));
    }
}
