#include "QVLCurlTransfer.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace {

constexpr long kLongestRedirection = 20;
constexpr double kLongestTimeoutInSeconds = 1'000'000;

/// The characters of a method or of a header's name.
bool isToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char character) {
        return character > ' ' && character < 0x7f &&
               std::string_view("()<>@,;:\\\"/[]?={}").find(static_cast<char>(character)) == std::string_view::npos;
    });
}

/// A line break in a value would begin another header.
bool isFieldValue(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t") == std::string_view::npos;
}

bool isSameIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char character) {
        return character >= 'A' && character <= 'Z' ? character | 0x20 : character;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

bool isSendable(const QVLHTTPRequest& request) {
    return (request.url.scheme() == "http" || request.url.scheme() == "https") && isToken(request.method) &&
           std::all_of(request.headers.begin(), request.headers.end(),
                       [](const QVLHTTPHeader& header) { return isToken(header.name) && isFieldValue(header.value); });
}

} // namespace

QVLCurlTransfer::QVLCurlTransfer(const QVLCurlLibrary& curl, std::uint64_t number, QVLHTTPRequest request,
                                 const QVLCurlOptions& options)
    : m_curl(curl),
      m_number(number),
      m_request(std::move(request)),
      m_headers(nullptr, {curl}),
      m_connectTo(nullptr, {curl}),
      m_handle(curl.easy_init(), {curl}) {
    if (!m_handle) {
        throw std::bad_alloc();
    }
    setConnection(options);
    setTimeouts();
    setMethodAndBody();
    setHeaders();
    setReception();
}

QVLError QVLCurlTransfer::error(QVLHTTPErrorCode code, std::string_view reason, const QVLURL& url) {
    return {kQVLHTTPErrorDomain, static_cast<int>(code), std::string(reason) + " <" + url.text() + ">"};
}

QVLCurlTransfer& QVLCurlTransfer::fromHandle(const QVLCurlLibrary& curl, CURL* handle) {
    void* transfer = nullptr;
    curl.easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
    return *static_cast<QVLCurlTransfer*>(transfer);
}

std::optional<QVLError> QVLCurlTransfer::preparationError() const {
    if (!isSendable(m_request)) {
        return error(QVLHTTPErrorCode::InvalidRequest, "The scheme, the method or a header cannot be sent",
                     m_request.url);
    }
    if (m_preparation != CURLE_OK) {
        return error(QVLHTTPErrorCode::Other, m_curl.easy_strerror(m_preparation), m_request.url);
    }
    return std::nullopt;
}

QVLHTTPReply QVLCurlTransfer::takeReply(CURLcode result) {
    if (result != CURLE_OK) {
        return {.error = error(codeOf(result), reasonFor(result), m_request.url)};
    }
    long statusCode = 0;
    m_curl.easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &statusCode);
    const char* url = nullptr;
    m_curl.easy_getinfo(handle(), CURLINFO_EFFECTIVE_URL, &url);
    return {.response = QVLHTTPResponse{
                .statusCode = static_cast<int>(statusCode), .body = std::move(m_body), .url = url ? url : ""}};
}

template <class Value>
void QVLCurlTransfer::set(CURLoption option, Value value) {
    const CURLcode result = m_curl.easy_setopt(handle(), option, value);
    if (m_preparation == CURLE_OK) {
        m_preparation = result;
    }
}

void QVLCurlTransfer::append(List& list, const std::string& text) {
    curl_slist* const longer = m_curl.slist_append(list.get(), text.c_str());
    if (!longer) {
        throw std::bad_alloc();
    }
    // The first element stays the same one; the list itself has it already.
    static_cast<void>(list.release());
    list.reset(longer);
}

void QVLCurlTransfer::setConnection(const QVLCurlOptions& options) {
    set(CURLOPT_PRIVATE, static_cast<void*>(this));
    set(CURLOPT_URL, m_request.url.text().c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    // What comes over a secure connection is run as a script, so a redirect must not lead to one that anybody can
    // change.
    set(CURLOPT_REDIR_PROTOCOLS_STR, m_request.url.scheme() == "https" ? "https" : "http,https");
    set(CURLOPT_FOLLOWLOCATION, m_request.followsRedirects ? 1L : 0L);
    set(CURLOPT_MAXREDIRS, kLongestRedirection);
    // Signals belong to the host.
    set(CURLOPT_NOSIGNAL, 1L);
    // Else cancelling waits for a host name that is being looked up.
    set(CURLOPT_QUICK_EXIT, 1L);
    for (const std::string& route : options.connectTo) {
        append(m_connectTo, route);
    }
    set(CURLOPT_CONNECT_TO, m_connectTo.get());
    if (!options.certificateAuthorityFile.empty()) {
        set(CURLOPT_CAINFO, options.certificateAuthorityFile.c_str());
        set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
}

void QVLCurlTransfer::setTimeouts() {
    // Zero would mean the library's own five minutes and no limit at all.
    const double seconds = std::clamp(m_request.timeout.count(), 0.001, kLongestTimeoutInSeconds);
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::ceil(seconds * 1000)));
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(std::ceil(seconds)));
}

void QVLCurlTransfer::setMethodAndBody() {
    if (m_request.method == "HEAD" && !m_request.body) {
        set(CURLOPT_NOBODY, 1L);
        return;
    }
    const bool isPost = m_request.body || m_request.method == "POST";
    if (isPost) {
        const std::string_view body = m_request.body ? std::string_view(*m_request.body) : std::string_view("");
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        set(CURLOPT_POSTFIELDS, body.data());
    }
    if (m_request.method != (isPost ? "POST" : "GET")) {
        set(CURLOPT_CUSTOMREQUEST, m_request.method.c_str());
    }
}

void QVLCurlTransfer::setHeaders() {
    const auto isGiven = [this](std::string_view name) {
        return std::any_of(m_request.headers.begin(), m_request.headers.end(),
                           [&](const QVLHTTPHeader& header) { return isSameIgnoringCase(header.name, name); });
    };
    // The library would add these two to a body by itself. A name with a colon and no more leaves a header out.
    for (const char* const name : {"Content-Type", "Expect"}) {
        if (!isGiven(name)) {
            append(m_headers, std::string(name) + ":");
        }
    }
    // An empty value is written with a semicolon.
    for (const QVLHTTPHeader& header : m_request.headers) {
        append(m_headers, isBlank(header.value) ? header.name + ";" : header.name + ": " + header.value);
    }
    set(CURLOPT_HTTPHEADER, m_headers.get());
    // Every encoding that the library can undo.
    set(CURLOPT_ACCEPT_ENCODING, "");
}

void QVLCurlTransfer::setReception() {
    set(CURLOPT_WRITEFUNCTION, &QVLCurlTransfer::receive);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    set(CURLOPT_ERRORBUFFER, m_errorText.data());
}

std::size_t QVLCurlTransfer::receive(char* data, std::size_t size, std::size_t count, void* context) {
    auto* const transfer = static_cast<QVLCurlTransfer*>(context);
    const std::size_t length = size * count;
    if (length > transfer->m_request.responseBodyLimit - transfer->m_body.size()) {
        transfer->m_isBodyTooLarge = true;
        return CURL_WRITEFUNC_ERROR;
    }
    transfer->m_body.append(data, length);
    return length;
}

QVLHTTPErrorCode QVLCurlTransfer::codeOf(CURLcode result) const {
    if (m_isBodyTooLarge) {
        return QVLHTTPErrorCode::BodyTooLarge;
    }
    long redirectCount = 0;
    m_curl.easy_getinfo(handle(), CURLINFO_REDIRECT_COUNT, &redirectCount);
    if (redirectCount > 0 && (result == CURLE_UNSUPPORTED_PROTOCOL || result == CURLE_URL_MALFORMAT)) {
        return QVLHTTPErrorCode::BadRedirect;
    }
    switch (result) {
    case CURLE_URL_MALFORMAT:
        return QVLHTTPErrorCode::InvalidRequest;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
        return QVLHTTPErrorCode::CannotConnect;
    case CURLE_OPERATION_TIMEDOUT:
        return QVLHTTPErrorCode::TimedOut;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return QVLHTTPErrorCode::ConnectionLost;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return QVLHTTPErrorCode::SecureConnectionFailed;
    case CURLE_TOO_MANY_REDIRECTS:
        return QVLHTTPErrorCode::BadRedirect;
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        return QVLHTTPErrorCode::BadResponse;
    default:
        return QVLHTTPErrorCode::Other;
    }
}

std::string QVLCurlTransfer::reasonFor(CURLcode result) const {
    if (m_isBodyTooLarge) {
        return "The answer is larger than " + std::to_string(m_request.responseBodyLimit) + " bytes";
    }
    const std::string detail = m_errorText.data();
    return m_curl.easy_strerror(result) + (detail.empty() ? std::string() : ": " + detail);
}
