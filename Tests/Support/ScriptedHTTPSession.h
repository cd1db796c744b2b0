#pragma once

#include "QVLHTTPSession.h"
#include "QVLMainRunLoop.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// A session that keeps what it is asked and answers when a test says so, through the run loop.
class ScriptedHTTPSession final : public QVLHTTPSession {
public:
    explicit ScriptedHTTPSession(std::shared_ptr<QVLMainRunLoop> runLoop) : m_runLoop(std::move(runLoop)) {}

    [[nodiscard]] QVLToken start(QVLHTTPRequest request, Completion completion) override;
    void invalidateAndCancel() override;

    /// Every request so far, in order, answered and cancelled ones included.
    [[nodiscard]] const std::vector<QVLHTTPRequest>& requests() const { return m_requests; }
    /// Whether the request of this index still waits for an answer.
    [[nodiscard]] bool isPending(std::size_t index) const {
        return index < m_states.size() && m_states[index]->completion;
    }
    [[nodiscard]] std::size_t pendingCount() const;
    [[nodiscard]] bool isInvalidated() const { return m_isInvalidated; }

    /// Answers the request of this index; a cancelled one stays silent.
    void answer(std::size_t index, int statusCode, std::string body);
    void fail(std::size_t index, QVLHTTPErrorCode code, const std::string& message);

private:
    struct State {
        Completion completion;
    };
    void reply(std::size_t index, QVLHTTPReply reply);

    std::shared_ptr<QVLMainRunLoop> m_runLoop;
    std::vector<QVLHTTPRequest> m_requests;
    std::vector<std::shared_ptr<State>> m_states;
    bool m_isInvalidated = false;
};
