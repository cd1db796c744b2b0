#pragma once

#include <string>

/// The host application's translations. Any thread.
class QVLLocalization {
public:
    virtual ~QVLLocalization() = default;

    /// The host's text for the key in the user's language; the key itself when the host has none.
    [[nodiscard]] virtual std::string localizedString(const std::string& key) const = 0;
};
