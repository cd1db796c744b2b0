#include "QVLURL.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

struct ParserCleanup {
    void operator()(CURLU* parser) const { curl_url_cleanup(parser); }
};
using Parser = std::unique_ptr<CURLU, ParserCleanup>;

struct TextCleanup {
    void operator()(char* text) const { curl_free(text); }
};

bool isVisibleASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) { return character > ' ' && character < '\x7f'; });
}

/// The parser by itself takes the first directory of "http:///name" for the host, and one slash for two.
bool hasAuthority(std::string_view text) {
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos && text.substr(colon).starts_with("://") && text.substr(colon + 3, 1) != "/";
}

std::string part(const Parser& parser, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(parser.get(), which, &text, /*flags=*/0) != CURLUE_OK) {
        return {};
    }
    return std::unique_ptr<char, TextCleanup>(text).get();
}

std::string percentDecoded(std::string_view text) {
    int length = 0;
    const std::unique_ptr<char, TextCleanup> decoded(
        curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &length));
    return decoded ? std::string(decoded.get(), static_cast<std::size_t>(length)) : std::string();
}

std::string asciiLowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    });
    return text;
}

std::string withoutBrackets(const std::string& host) {
    return host.starts_with('[') && host.ends_with(']') ? host.substr(1, host.size() - 2) : host;
}

std::string fileNameFromPath(std::string_view path) {
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    // Looked for before decoding: an encoded slash does not separate.
    std::string name = percentDecoded(path.substr(path.rfind('/') + 1));
    const bool isPlainName =
        name != "." && name != ".." && name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
    return isPlainName ? name : std::string();
}

} // namespace

std::optional<QVLURL> QVLURL::fromString(std::string_view text) {
    if (!isVisibleASCII(text) || !hasAuthority(text)) {
        return std::nullopt;
    }
    QVLURL url(text);
    const Parser parser(curl_url());
    if (!parser ||
        curl_url_set(parser.get(), CURLUPART_URL, url.m_text.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
        return std::nullopt;
    }
    url.m_host = withoutBrackets(part(parser, CURLUPART_HOST));
    if (url.m_host.empty()) {
        return std::nullopt;
    }
    url.m_scheme = asciiLowercase(part(parser, CURLUPART_SCHEME));
    url.m_lastPathComponent = fileNameFromPath(part(parser, CURLUPART_PATH));
    return url;
}
