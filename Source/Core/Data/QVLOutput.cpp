#include "QVLOutput.h"

#include "QVLLogMacros.h"

namespace {

bool isQVLJSONValue(const QVLJSONValue& value) {
    return !value.isNothing() && !value.isRecord();
}

} // namespace

std::shared_ptr<QVLOutput> QVLOutput::init() {
    return std::shared_ptr<QVLOutput>(new QVLOutput);
}

std::shared_ptr<QVLOutput> QVLOutput::initWithQVLJSONObject(const QVLJSONValue& JSONObject) {
    std::shared_ptr<QVLOutput> output = init();
    QVL_ASSERT_PARAMETER(isQVLJSONValue(JSONObject), output.get());
    output->m_genericValue = JSONObject;
    return output;
}

std::optional<std::string> QVLOutput::stringValueOf(const QVLJSONValue& value) {
    return value.qvl_castToStringValue();
}

std::int64_t QVLOutput::integerValueOf(const QVLJSONValue& value) {
    return value.qvl_castToIntegerValue();
}

bool QVLOutput::boolValueOf(const QVLJSONValue& value) {
    return value.qvl_castToBoolValue();
}

std::optional<QVLJSONArray> QVLOutput::arrayValueOf(const QVLJSONValue& value) {
    return value.qvl_castToArrayValue();
}

std::optional<QVLJSONDictionary> QVLOutput::dictionaryValueOf(const QVLJSONValue& value) {
    return value.qvl_castToDictionaryValue();
}

bool QVLOutput::isEqual(const QVLObject& other) const {
    const auto* output = dynamic_cast<const QVLOutput*>(&other);
    return output && !m_genericValue.isNothing() && m_genericValue == output->m_genericValue;
}

std::string QVLOutput::description() const {
    return defaultDescription() + QVLStringWithFormat(" value=%@", m_genericValue);
}

std::shared_ptr<QVLJSONSerializable> QVLOutput::copy() const {
    std::shared_ptr<QVLOutput> copy = init();
    copy->setGenericValue(m_genericValue);
    return copy;
}
