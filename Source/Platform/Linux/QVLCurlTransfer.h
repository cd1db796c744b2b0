#pragma once

#include "QVLCurlLibrary.h"
#include "QVLHTTPSession.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What is set for all requests of a session.
struct QVLCurlOptions {
    /// Where to connect to instead, as "host:port:other host:other port"; an empty host or port stands for any.
    std::vector<std::string> connectTo = {};
    /// A file of certificates (PEM) to trust in place of the system's; empty for the system's.
    std::string certificateAuthorityFile = {};
    /// Asked with the first request, on the thread of the transfers.
    const QVLCurlLibrary& (*library)() = &QVLCurlLibrary::shared;
};

/// One request under way: a libcurl handle and everything that the handle points to.
///
/// One thread at a time. The handle must be out of every multi handle when this is destroyed.
class QVLCurlTransfer final {
public:
    /// The library must be loaded.
    QVLCurlTransfer(const QVLCurlLibrary& curl, std::uint64_t number, QVLHTTPRequest request,
                    const QVLCurlOptions& options);
    QVLCurlTransfer(const QVLCurlTransfer&) = delete;
    QVLCurlTransfer& operator=(const QVLCurlTransfer&) = delete;

    [[nodiscard]] static QVLError error(QVLHTTPErrorCode code, std::string_view reason, const QVLURL& url);
    [[nodiscard]] static QVLCurlTransfer& fromHandle(const QVLCurlLibrary& curl, CURL* handle);

    /// Why the request cannot be sent; no value when it can.
    [[nodiscard]] std::optional<QVLError> preparationError() const;
    [[nodiscard]] std::uint64_t number() const { return m_number; }
    [[nodiscard]] CURL* handle() const { return m_handle.get(); }

    /// What the transfer came to, once, after it has ended with this result.
    [[nodiscard]] QVLHTTPReply takeReply(CURLcode result);

private:
    struct HandleCleanup {
        const QVLCurlLibrary& curl;
        void operator()(CURL* handle) const { curl.easy_cleanup(handle); }
    };
    struct ListCleanup {
        const QVLCurlLibrary& curl;
        void operator()(curl_slist* list) const { curl.slist_free_all(list); }
    };
    using List = std::unique_ptr<curl_slist, ListCleanup>;

    template <class Value>
    void set(CURLoption option, Value value);
    void append(List& list, const std::string& text);
    void setConnection(const QVLCurlOptions& options);
    void setTimeouts();
    void setMethodAndBody();
    void setHeaders();
    void setReception();
    static std::size_t receive(char* data, std::size_t size, std::size_t count, void* context);
    [[nodiscard]] QVLHTTPErrorCode codeOf(CURLcode result) const;
    [[nodiscard]] std::string reasonFor(CURLcode result) const;

    const QVLCurlLibrary& m_curl;
    const std::uint64_t m_number;
    const QVLHTTPRequest m_request;
    std::string m_body;
    bool m_isBodyTooLarge = false;
    /// The first option that was refused; CURLE_OK when none was.
    CURLcode m_preparation = CURLE_OK;
    std::array<char, CURL_ERROR_SIZE> m_errorText{};
    List m_headers;
    List m_connectTo;
    // Last, so that it goes before what it points to.
    std::unique_ptr<CURL, HandleCleanup> m_handle;
};
