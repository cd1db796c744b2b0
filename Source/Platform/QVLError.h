#pragma once

#include "QVLExport.h"

#include <string>

/// Why something failed, as a value. A plain value; any thread.
struct QVL_EXPORT QVLError {
    /// Who tells the codes apart: a reverse-DNS identifier.
    std::string domain;
    int code = 0;
    /// The reason in words.
    std::string message;

    /// All three, for a log line: "com.quorvel.http 3: The request timed out".
    [[nodiscard]] std::string description() const { return domain + " " + std::to_string(code) + ": " + message; }

    friend bool operator==(const QVLError&, const QVLError&) = default;
};
