#pragma once

#include "QVLExport.h"

#include <optional>
#include <string>
#include <string_view>

/// An absolute URL: a scheme, "://" and a host, and what may follow. An immutable value; any thread.
class QVL_EXPORT QVLURL final {
public:
    /// No value for text that is not an absolute URL with a host: relative addresses, local files, blanks, control
    /// characters and anything beyond ASCII, which a URL carries percent-encoded.
    [[nodiscard]] static std::optional<QVLURL> fromString(std::string_view text);

    /// The text exactly as given.
    [[nodiscard]] const std::string& text() const noexcept { return m_text; }

    /// In lower case, without the colon.
    [[nodiscard]] const std::string& scheme() const noexcept { return m_scheme; }

    /// Host name or address, percent-decoded; an IPv6 address comes without its brackets. Never empty.
    [[nodiscard]] const std::string& host() const noexcept { return m_host; }

    /// The last component of the path, percent-decoded, fit to be joined to a directory as a file name: empty when
    /// there is none, and also when it would not be a plain name of its own (".", "..", or with "/" or NUL in it). A
    /// slash at the end of the path does not count.
    [[nodiscard]] const std::string& lastPathComponent() const noexcept { return m_lastPathComponent; }

    /// Equality of the texts.
    friend bool operator==(const QVLURL& a, const QVLURL& b) noexcept { return a.m_text == b.m_text; }

private:
    explicit QVLURL(std::string_view text) : m_text(text) {}

    std::string m_text;
    std::string m_scheme;
    std::string m_host;
    std::string m_lastPathComponent;
};
