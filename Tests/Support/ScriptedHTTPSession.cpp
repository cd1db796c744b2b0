#include "ScriptedHTTPSession.h"

#include <algorithm>
#include <utility>

QVLToken ScriptedHTTPSession::start(QVLHTTPRequest request, Completion completion) {
    const std::size_t index = m_requests.size();
    m_requests.push_back(std::move(request));
    m_states.push_back(std::make_shared<State>(State{std::move(completion)}));
    if (m_isInvalidated) {
        fail(index, QVLHTTPErrorCode::SessionInvalidated, "The session was invalidated");
    }
    return QVLToken([weakState = std::weak_ptr(m_states.back())] {
        if (const auto state = weakState.lock()) {
            const Completion dropped = std::exchange(state->completion, nullptr);
        }
    });
}

void ScriptedHTTPSession::invalidateAndCancel() {
    m_isInvalidated = true;
    const auto states = m_states;
    for (const auto& state : states) {
        const Completion dropped = std::exchange(state->completion, nullptr);
    }
}

std::size_t ScriptedHTTPSession::pendingCount() const {
    return static_cast<std::size_t>(std::count_if(m_states.begin(), m_states.end(),
                                                  [](const auto& state) { return state->completion != nullptr; }));
}

void ScriptedHTTPSession::answer(std::size_t index, int statusCode, std::string body) {
    reply(index, {.response = QVLHTTPResponse{
                      .statusCode = statusCode, .body = std::move(body), .url = m_requests.at(index).url.text()}});
}

void ScriptedHTTPSession::fail(std::size_t index, QVLHTTPErrorCode code, const std::string& message) {
    reply(index, {.error = QVLError{kQVLHTTPErrorDomain, static_cast<int>(code), message}});
}

void ScriptedHTTPSession::reply(std::size_t index, QVLHTTPReply reply) {
    m_runLoop->post([weakState = std::weak_ptr(m_states.at(index)), reply = std::move(reply)] {
        const auto state = weakState.lock();
        if (const Completion completion = state ? std::exchange(state->completion, nullptr) : nullptr) {
            completion(reply);
        }
    });
}
