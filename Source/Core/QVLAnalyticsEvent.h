#pragma once

#include "QVLJSONValue.h"
#include "QVLObject.h"

#include <memory>
#include <optional>
#include <string>

/// An analytics event for the host to send on. Immutable; any thread.
class QVL_EXPORT QVLAnalyticsEvent : public QVLObject {
public:
    [[nodiscard]] virtual std::optional<std::string> category() const = 0;
    [[nodiscard]] virtual std::optional<std::string> action() const = 0;
    [[nodiscard]] virtual std::optional<std::string> label() const = 0;
    /// The event's number, or nothing.
    [[nodiscard]] virtual QVLJSONValue value() const = 0;
    /// Custom dimensions as the rules gave them; no value for none.
    [[nodiscard]] virtual std::optional<QVLJSONDictionary> dimensions() const = 0;
};
