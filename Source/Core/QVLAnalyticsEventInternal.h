#pragma once

#include "QVLAnalyticsEvent.h"

/// The library's analytics event, equal to another one when all five properties are equal. Immutable; any thread.
///
/// The properties are kept as given. One of another kind than its reader tells of, which a script can bring about,
/// counts for equality and shows in the description; its reader answers no value.
class QVL_EXPORT QVLAnalyticsEventInternal final : public QVLAnalyticsEvent {
public:
    /// Nothing leaves a property out.
    [[nodiscard]] static std::shared_ptr<QVLAnalyticsEventInternal>
    initWithCategory(const QVLJSONValue& category, const QVLJSONValue& action, const QVLJSONValue& label,
                     const QVLJSONValue& value, const QVLJSONValue& dimensions);

    /// The event that a script asks for: the members "category", "action", "label", "value" and "dimensions", of which
    /// null counts as absent. Anything but an object gives an event without properties.
    [[nodiscard]] static std::shared_ptr<QVLAnalyticsEventInternal> eventWithJSONObject(const QVLJSONValue& JSONObject);

    [[nodiscard]] std::optional<std::string> category() const override { return m_category.qvl_castToStringValue(); }
    [[nodiscard]] std::optional<std::string> action() const override { return m_action.qvl_castToStringValue(); }
    [[nodiscard]] std::optional<std::string> label() const override { return m_label.qvl_castToStringValue(); }
    [[nodiscard]] QVLJSONValue value() const override { return m_value.isNumber() ? m_value : QVLJSONValue(); }
    [[nodiscard]] std::optional<QVLJSONDictionary> dimensions() const override {
        return m_dimensions.qvl_castToDictionaryValue();
    }

    [[nodiscard]] bool isEqual(const QVLObject& other) const override;
    [[nodiscard]] std::size_t hash() const override;
    /// One property a line.
    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string className() const override { return "QVLAnalyticsEventInternal"; }

private:
    QVLAnalyticsEventInternal() = default;

    QVLJSONValue m_category;
    QVLJSONValue m_action;
    QVLJSONValue m_label;
    QVLJSONValue m_value;
    QVLJSONValue m_dimensions;
};
