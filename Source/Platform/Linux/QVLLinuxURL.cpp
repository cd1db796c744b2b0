#include "QVLURL.h"

#include <glib.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <arpa/inet.h>

namespace {

struct TextCleanup {
    void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, TextCleanup>;

bool isVisibleASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) { return character > ' ' && character < '\x7f'; });
}

/// Leaves a percent sign that encodes nothing as it is.
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool isEscape = text[index] == '%' && text.size() - index > 2 && g_ascii_isxdigit(text[index + 1]) &&
                              g_ascii_isxdigit(text[index + 2]);
        if (isEscape) {
            const int value = g_ascii_xdigit_value(text[index + 1]) * 16 + g_ascii_xdigit_value(text[index + 2]);
            decoded.push_back(static_cast<char>(value));
            index += 2;
        } else {
            decoded.push_back(text[index]);
        }
    }
    return decoded;
}

/// None of these is in the name of a host, and what connects to it may take them for the end of the name.
bool isHostCharacter(char character) {
    constexpr std::string_view kForbidden = "/:#?!@{}[]\\$'\"^`*<>=;,+&()";
    return !g_ascii_iscntrl(character) && character != ' ' && kForbidden.find(character) == std::string_view::npos;
}

bool isAddressOfVersion6(const std::string& text) {
    in6_addr address = {};
    return inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

/// Empty for what cannot be a host. The parser has taken the brackets away and keeps colons only where those were.
std::string decodedHost(const std::string& host) {
    if (host.find(':') != std::string::npos) {
        // The interface behind an address is the business of whoever connects.
        const std::string address = host.substr(0, host.find('%'));
        return isAddressOfVersion6(address) && host.find_first_of("[]") == std::string::npos ? address : std::string();
    }
    const std::string decoded = percentDecoded(host);
    return std::all_of(decoded.begin(), decoded.end(), isHostCharacter) ? decoded : std::string();
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

struct Network {
    std::string scheme;
    std::string host;
};

/// Of the part of an address that comes before its path.
std::optional<Network> parsedNetwork(const std::string& text) {
    // Encoded, the host is decoded here: the parser would turn what is not ASCII into another name.
    constexpr auto kFlags = static_cast<GUriFlags>(G_URI_FLAGS_ENCODED | G_URI_FLAGS_NON_DNS);
    char* scheme = nullptr;
    char* host = nullptr;
    if (!g_uri_split_network(text.c_str(), kFlags, &scheme, &host, /*port=*/nullptr, /*error=*/nullptr)) {
        return std::nullopt;
    }
    const Text ownedScheme(scheme);
    const Text ownedHost(host);
    return Network{.scheme = scheme, .host = decodedHost(host)};
}

} // namespace

std::optional<QVLURL> QVLURL::fromString(std::string_view text) {
    const std::size_t separator = text.find("://");
    if (!isVisibleASCII(text) || separator == std::string_view::npos) {
        return std::nullopt;
    }
    // The parser would refuse a percent sign that encodes nothing, which a path may have.
    const std::size_t pathStart = std::min(text.find_first_of("/?#", separator + 3), text.size());
    std::optional<Network> network = parsedNetwork(std::string(text.substr(0, pathStart)));
    if (!network || network->host.empty() || network->scheme == "file") {
        return std::nullopt;
    }
    QVLURL url(text);
    url.m_scheme = std::move(network->scheme);
    url.m_host = std::move(network->host);
    url.m_lastPathComponent = fileNameFromPath(text.substr(pathStart, text.find_first_of("?#", pathStart) - pathStart));
    return url;
}
