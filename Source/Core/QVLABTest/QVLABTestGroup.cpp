#include "QVLABTestGroup.h"

#include <utility>

namespace {

constexpr const char* kGuid = "guid";
constexpr const char* kBasic = "basic";
constexpr const char* kAttributeValues = "attributeValues";

} // namespace

std::shared_ptr<QVLABTestGroup> QVLABTestGroup::init() {
    return std::shared_ptr<QVLABTestGroup>(new QVLABTestGroup);
}

std::shared_ptr<QVLABTestGroup> QVLABTestGroup::groupWithJSON(const QVLJSONValue& JSON) {
    const QVLJSONDictionary members = JSON.dictionaryOrEmpty();
    const QVLJSONValue guid = members.valueForKey(kGuid);
    const QVLJSONValue basic = members.valueForKey(kBasic);
    // Without the flag it is no group, little as the library cares for it.
    if (!guid.isString() || !basic.isNumber()) {
        return nullptr;
    }
    const QVLJSONValue attributeValues = members.valueForKey(kAttributeValues);
    if (!attributeValues.isNothing() && !attributeValues.isDictionary()) {
        return nullptr;
    }
    if (attributeValues.depth() > kMaximumAttributeDepth) {
        return nullptr;
    }
    std::shared_ptr<QVLABTestGroup> group = init();
    group->setGuid(guid.qvl_castToStringValue());
    group->setBasic(basic.qvl_castToBoolValue());
    group->setAttributeValues(attributeValues.qvl_castToDictionaryValue());
    return group;
}

QVLJSONDictionary QVLABTestGroup::toJSON() const {
    return {{kGuid, m_guid}, {kBasic, m_basic}, {kAttributeValues, m_attributeValues}};
}

void QVLABTestGroup::setAttributeValues(std::optional<QVLJSONDictionary> attributeValues) {
    if (attributeValues && attributeValues->depth() > kMaximumAttributeDepth) {
        attributeValues.reset();
    }
    m_attributeValues = std::move(attributeValues);
}
