#include "QVLAnalyticsEventInternal.h"

#include "QVLFormat.h"

namespace {

QVLJSONValue withoutNull(const QVLJSONValue& value) {
    return value.isNull() ? QVLJSONValue() : value;
}

} // namespace

std::shared_ptr<QVLAnalyticsEventInternal> QVLAnalyticsEventInternal::initWithCategory(const QVLJSONValue& category,
                                                                                       const QVLJSONValue& action,
                                                                                       const QVLJSONValue& label,
                                                                                       const QVLJSONValue& value,
                                                                                       const QVLJSONValue& dimensions) {
    std::shared_ptr<QVLAnalyticsEventInternal> event(new QVLAnalyticsEventInternal);
    event->m_category = category;
    event->m_action = action;
    event->m_label = label;
    event->m_value = value;
    event->m_dimensions = dimensions;
    return event;
}

std::shared_ptr<QVLAnalyticsEventInternal>
QVLAnalyticsEventInternal::eventWithJSONObject(const QVLJSONValue& JSONObject) {
    const QVLJSONDictionary members = JSONObject.dictionaryOrEmpty();
    const auto member = [&](const char* name) { return withoutNull(members.valueForKey(name)); };
    return initWithCategory(member("category"), member("action"), member("label"), member("value"),
                            member("dimensions"));
}

bool QVLAnalyticsEventInternal::isEqual(const QVLObject& other) const {
    const auto* event = dynamic_cast<const QVLAnalyticsEventInternal*>(&other);
    return event && m_category == event->m_category && m_action == event->m_action && m_label == event->m_label &&
           m_value == event->m_value && m_dimensions == event->m_dimensions;
}

std::size_t QVLAnalyticsEventInternal::hash() const {
    return m_category.hash() ^ m_action.hash() ^ m_label.hash() ^ m_value.hash() ^ m_dimensions.hash();
}

std::string QVLAnalyticsEventInternal::description() const {
    return defaultDescription() + " {\n" + QVLStringWithFormat("  category=%@\n", m_category) +
           QVLStringWithFormat("  action=%@\n", m_action) + QVLStringWithFormat("  label=%@\n", m_label) +
           QVLStringWithFormat("  value=%@\n", m_value) + QVLStringWithFormat("  dimensions=%@\n", m_dimensions) + "}";
}
