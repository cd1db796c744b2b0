#pragma once

#include <optional>
#include <string>
#include <utility>

/// A value, or the reason why there is none, worded for a log line.
template <class Value>
struct QVLResult {
    std::optional<Value> value;
    std::string error;

    explicit operator bool() const noexcept { return value.has_value(); }
    const Value& operator*() const { return *value; }
    const Value* operator->() const { return &*value; }

    [[nodiscard]] static QVLResult success(Value value) { return {std::move(value), {}}; }
    [[nodiscard]] static QVLResult failure(std::string error) { return {std::nullopt, std::move(error)}; }
};

/// The outcome of an operation that has nothing to give but its success: true, or an error.
struct QVLOutcome {
    bool succeeded = true;
    std::string error;

    explicit operator bool() const noexcept { return succeeded; }

    [[nodiscard]] static QVLOutcome success() { return {}; }
    [[nodiscard]] static QVLOutcome failure(std::string error) { return {false, std::move(error)}; }
};
