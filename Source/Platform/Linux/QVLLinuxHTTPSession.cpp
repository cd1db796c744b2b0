#include "QVLLinuxHTTPSession.h"

#include "QVLCurlWorker.h"

#include <exception>
#include <utility>

QVLLinuxHTTPSession::QVLLinuxHTTPSession(std::shared_ptr<QVLMainRunLoop> mainRunLoop, QVLCurlOptions options)
    : m_mainRunLoop(std::move(mainRunLoop)), m_completions(std::make_shared<Completions>()) {
    try {
        m_worker = std::make_shared<QVLCurlWorker>(
            std::move(options), [mainRunLoop = m_mainRunLoop,
                                 completions = std::weak_ptr(m_completions)](std::uint64_t number, QVLHTTPReply reply) {
                mainRunLoop->post(delivery(completions, number, std::move(reply)));
            });
    } catch (const std::exception& error) {
        // No thread or no memory to be had: every request tells so.
        m_reasonWithoutWorker = {QVLHTTPErrorCode::Other, std::string("Cannot use the network: ") + error.what()};
    }
}

QVLLinuxHTTPSession::~QVLLinuxHTTPSession() {
    invalidateAndCancel();
}

QVLToken QVLLinuxHTTPSession::start(QVLHTTPRequest request, Completion completion) {
    const std::uint64_t number = m_nextNumber++;
    m_completions->emplace(number, std::move(completion));
    if (m_worker) {
        m_worker->start(number, std::move(request));
    } else {
        m_mainRunLoop->post(delivery(
            m_completions, number,
            {.error = QVLCurlTransfer::error(m_reasonWithoutWorker.code, m_reasonWithoutWorker.message, request.url)}));
    }
    return QVLToken([completions = std::weak_ptr(m_completions), worker = std::weak_ptr(m_worker), number] {
        const auto living = completions.lock();
        const auto livingWorker = worker.lock();
        // Taken out before it is destroyed, since what it holds may start and cancel requests in its turn.
        const auto dropped = living ? living->extract(number) : Completions::node_type();
        if (dropped && livingWorker) {
            livingWorker->cancel(number);
        }
    });
}

void QVLLinuxHTTPSession::invalidateAndCancel() {
    m_worker.reset();
    const Completions dropped = std::exchange(*m_completions, {});
}

std::function<void()> QVLLinuxHTTPSession::delivery(std::weak_ptr<Completions> completions, std::uint64_t number,
                                                    QVLHTTPReply reply) {
    // Shared, so that no copy of the function copies a body.
    auto sharedReply = std::make_shared<const QVLHTTPReply>(std::move(reply));
    return [completions = std::move(completions), number, sharedReply = std::move(sharedReply)] {
        const auto living = completions.lock();
        const auto entry = living ? living->extract(number) : Completions::node_type();
        if (entry && entry.mapped()) {
            entry.mapped()(*sharedReply);
        }
    };
}
