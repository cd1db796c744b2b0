#pragma once

#include "QVLJSONValue.h"
#include "QVLObject.h"

#include <optional>
#include <string>
#include <string_view>

/// An object that a host may attach to a web-scripting bridge of its own, so that scripts can write to the library's
/// log.
///
/// Such a bridge asks for each operation under which name scripts see it, and whether they see it at all. Any thread.
class QVL_EXPORT QVLScriptObject final : public QVLObject {
public:
    /// The name under which scripts see an operation: for one that begins with "js_", what follows up to the first ":"
    /// (`js_log:` is seen as "log"); no value for any other.
    [[nodiscard]] static std::optional<std::string> webScriptNameForSelector(std::string_view selector);

    /// Whether scripts do not see the operation.
    [[nodiscard]] static bool isSelectorExcludedFromWebScript(std::string_view selector);

    /// Writes the value to the library's log at debug level, in the name of the script.
    void js_log(
        const QVLJSONValue& value) const; // NOLINT(readability-identifier-naming): the name that the bridge looks for

    [[nodiscard]] std::string className() const override { return "QVLScriptObject"; }
};
