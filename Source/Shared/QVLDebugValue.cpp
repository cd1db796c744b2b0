#include "QVLDebugValue.h"

#include "QVLJSONArray.h"
#include "QVLJSONDictionary.h"

#include <algorithm>

namespace {

/// For values that are equal: whether each boolean in one is a boolean in the other.
bool haveSameBooleans(const QVLJSONValue& a, const QVLJSONValue& b) {
    if (a.isArray()) {
        const QVLJSONArray arrayA = a.arrayOrEmpty();
        const QVLJSONArray arrayB = b.arrayOrEmpty();
        return std::equal(arrayA.begin(), arrayA.end(), arrayB.begin(), arrayB.end(), haveSameBooleans);
    }
    if (a.isDictionary()) {
        const QVLJSONDictionary dictionaryA = a.dictionaryOrEmpty();
        const QVLJSONDictionary dictionaryB = b.dictionaryOrEmpty();
        return std::equal(dictionaryA.begin(), dictionaryA.end(), dictionaryB.begin(), dictionaryB.end(),
                          [](const auto& x, const auto& y) { return haveSameBooleans(x.value, y.value); });
    }
    return a.isBoolean() == b.isBoolean();
}

} // namespace

QVLDebugValueType QVLDebugValue::type() const {
    if (m_JSONValue.isString()) {
        return QVLDebugValueTypeString;
    }
    if (m_JSONValue.isNumber()) {
        return m_JSONValue.isBoolean() ? QVLDebugValueTypeBool : QVLDebugValueTypeNumber;
    }
    return m_JSONValue.isNull() ? QVLDebugValueTypeNull : QVLDebugValueTypeJSON;
}

bool operator==(const QVLDebugValue& a, const QVLDebugValue& b) {
    return a.m_date == b.m_date && a.m_JSONValue == b.m_JSONValue && haveSameBooleans(a.m_JSONValue, b.m_JSONValue);
}
