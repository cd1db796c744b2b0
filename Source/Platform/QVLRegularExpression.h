#pragma once

#include "QVLResult.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A compiled pattern in which "^" and "$" match at every line. Immutable once made; any thread.
class QVLRegularExpression {
public:
    virtual ~QVLRegularExpression() = default;

    /// The reason in words for a pattern that cannot be compiled.
    [[nodiscard]] static QVLResult<std::shared_ptr<const QVLRegularExpression>> compile(const std::string& pattern);

    /// The first match in the text: the whole match, then each group, which has no value when it took no part. Empty
    /// when nothing matches.
    [[nodiscard]] virtual std::vector<std::optional<std::string>> firstMatch(std::string_view text) const = 0;
};
