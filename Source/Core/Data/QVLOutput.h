#pragma once

#include "QVLJSONSerializable.h"

#include <cstdint>
#include <optional>
#include <string>

/// One output of the rules: a JSON value with readers that never fail.
///
/// The readers convert nothing: an output holding the text "12" has `integerValue` 0, and one holding the number 1 has
/// no `stringValue`. Made by the engine's `outputForKey`; the host's own afterwards. One thread at a time.
class QVL_EXPORT QVLOutput final : public QVLJSONCompatible {
public:
    /// An output without a value.
    [[nodiscard]] static std::shared_ptr<QVLOutput> init();
    /// An output holding the value. One that is not a JSON value fails an assertion and is kept all the same.
    [[nodiscard]] static std::shared_ptr<QVLOutput> initWithQVLJSONObject(const QVLJSONValue& JSONObject);

    /// The value as the rules gave it; nothing without one.
    [[nodiscard]] const QVLJSONValue& genericValue() const { return m_genericValue; }
    void setGenericValue(const QVLJSONValue& value) { m_genericValue = value.copy(); }

    [[nodiscard]] std::optional<std::string> stringValue() const { return stringValueOf(m_genericValue); }
    [[nodiscard]] std::int64_t integerValue() const { return integerValueOf(m_genericValue); }
    [[nodiscard]] bool boolValue() const { return boolValueOf(m_genericValue); }
    [[nodiscard]] std::optional<QVLJSONArray> arrayValue() const { return arrayValueOf(m_genericValue); }
    [[nodiscard]] std::optional<QVLJSONDictionary> dictionaryValue() const { return dictionaryValueOf(m_genericValue); }

    // The same readers for any value.
    [[nodiscard]] static std::optional<std::string> stringValueOf(const QVLJSONValue& value);
    [[nodiscard]] static std::int64_t integerValueOf(const QVLJSONValue& value);
    [[nodiscard]] static bool boolValueOf(const QVLJSONValue& value);
    [[nodiscard]] static std::optional<QVLJSONArray> arrayValueOf(const QVLJSONValue& value);
    [[nodiscard]] static std::optional<QVLJSONDictionary> dictionaryValueOf(const QVLJSONValue& value);

    /// The value itself, not converted.
    [[nodiscard]] QVLJSONValue qvl_JSONObject() const override { return m_genericValue; }
    /// True for another output with an equal value. An output without a value equals none, not even itself.
    [[nodiscard]] bool isEqual(const QVLObject& other) const override;
    [[nodiscard]] std::size_t hash() const override { return m_genericValue.hash(); }
    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::shared_ptr<QVLJSONSerializable> copy() const override;
    [[nodiscard]] std::string className() const override { return "QVLOutput"; }

private:
    QVLOutput() = default;

    QVLJSONValue m_genericValue;
};
