#pragma once

#include "QVLDate.h"
#include "QVLError.h"
#include "QVLToken.h"
#include "QVLURL.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// One header field of a request. A field may occur more than once; its value may be empty.
struct QVLHTTPHeader {
    std::string name;
    std::string value;

    friend bool operator==(const QVLHTTPHeader&, const QVLHTTPHeader&) = default;
};

struct QVLHTTPRequest {
    /// The scheme must be http or https.
    QVLURL url;
    std::string method = "GET";
    /// Sent in addition to what the protocol itself needs. A "Content-Type" is sent only if it is among these.
    std::vector<QVLHTTPHeader> headers = {};
    std::optional<std::string> body = std::nullopt;
    /// How long the server may keep silent: while connecting, and later between two pieces of the answer. Counts in
    /// whole seconds once connected.
    QVLTimeInterval timeout{60};
    /// Whether an answer that redirects is followed; else it is the answer. The headers go along to any host, so a
    /// request with credentials had better not be.
    bool followsRedirects = true;
    /// The answer fails as soon as its body, as the caller would get it, grows larger than this many bytes.
    std::size_t responseBodyLimit = std::size_t{64} * 1024 * 1024;
};

/// A complete answer of a server, whatever its status.
struct QVLHTTPResponse {
    int statusCode = 0;
    /// All of it, with any transfer compression undone.
    std::string body = {};
    /// The address that answered in the end, redirects followed.
    std::string url = {};

    /// Whether the answer carries data; an empty body is none.
    [[nodiscard]] bool hasBody() const noexcept { return !body.empty(); }

    /// Status, size and address, for a log line.
    [[nodiscard]] std::string description() const {
        return "<status " + std::to_string(statusCode) + ", " + std::to_string(body.size()) + " bytes from " + url +
               ">";
    }
};

/// The domain of the errors of a session.
inline constexpr const char* kQVLHTTPErrorDomain = "com.quorvel.http";

/// The codes of that domain.
enum class QVLHTTPErrorCode : int {
    /// The request itself cannot be sent: another scheme than http or https, or a header that would break the protocol.
    InvalidRequest = 1,
    /// The host name is unknown or cannot be looked up, or nobody answers there.
    CannotConnect = 2,
    /// The server kept silent for longer than the request allows.
    TimedOut = 3,
    /// The connection ended before the answer was complete.
    ConnectionLost = 4,
    /// The server cannot prove who it is, or no secure connection comes about.
    SecureConnectionFailed = 5,
    /// More redirects than a session follows, or one that leads away from https.
    BadRedirect = 6,
    /// What came is not an HTTP answer, or its compression is broken.
    BadResponse = 7,
    /// The body is larger than the request allows.
    BodyTooLarge = 8,
    /// The session was invalidated before the request was made.
    SessionInvalidated = 9,
    /// Anything else; the message says what.
    Other = 10,
};

/// What a request came to: exactly one of the two has a value.
struct QVLHTTPReply {
    std::optional<QVLHTTPResponse> response = std::nullopt;
    std::optional<QVLError> error = std::nullopt;
};

/// Sends HTTP requests and collects the answers.
///
/// Main thread. Nothing waits for the network: not a request, nor cancelling one, nor destroying the session. Requests
/// are sent side by side. Up to 20 redirects are followed, from https to https only, if the request allows it.
/// There is no cache and there are no cookies.
class QVLHTTPSession {
public:
    using Completion = std::function<void(const QVLHTTPReply& reply)>;

    QVLHTTPSession() = default;
    QVLHTTPSession(const QVLHTTPSession&) = delete;
    QVLHTTPSession& operator=(const QVLHTTPSession&) = delete;
    /// Cancels every request that is under way.
    virtual ~QVLHTTPSession() = default;

    /// Sends a request. The completion runs once on the main run loop, never inside this call, and is then given back.
    /// Dropping the token cancels the request: its completion is given back at once and never runs.
    [[nodiscard]] virtual QVLToken start(QVLHTTPRequest request, Completion completion) = 0;

    /// Cancels every request that is under way; none of their completions runs. A request started later fails with
    /// `SessionInvalidated`.
    virtual void invalidateAndCancel() = 0;
};
