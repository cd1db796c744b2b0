#pragma once

#include "QVLCurlTransfer.h"
#include "QVLHTTPSession.h"
#include "QVLMainRunLoop.h"

#include <cstdint>
#include <map>
#include <memory>

class QVLCurlWorker;

/// HTTP over libcurl, on one thread of the session's own, which loads libcurl with the first request. Proxies are taken
/// from the environment's usual variables.
class QVLLinuxHTTPSession final : public QVLHTTPSession {
public:
    explicit QVLLinuxHTTPSession(std::shared_ptr<QVLMainRunLoop> mainRunLoop, QVLCurlOptions options = {});
    ~QVLLinuxHTTPSession() override;

    [[nodiscard]] QVLToken start(QVLHTTPRequest request, Completion completion) override;
    void invalidateAndCancel() override;

private:
    using Completions = std::map<std::uint64_t, Completion>;

    /// Makes the function that hands a reply to the completion of that number, if it is still wanted.
    static std::function<void()> delivery(std::weak_ptr<Completions> completions, std::uint64_t number,
                                          QVLHTTPReply reply);

    std::shared_ptr<QVLMainRunLoop> m_mainRunLoop;
    // The main thread's alone, and there even the last to go: completions hold what lives there.
    std::shared_ptr<Completions> m_completions;
    std::uint64_t m_nextNumber = 0;
    /// Null once invalidated, or where none could be made.
    std::shared_ptr<QVLCurlWorker> m_worker;
    struct Reason {
        QVLHTTPErrorCode code = QVLHTTPErrorCode::SessionInvalidated;
        std::string message = "The session was invalidated";
    };
    Reason m_reasonWithoutWorker;
};
