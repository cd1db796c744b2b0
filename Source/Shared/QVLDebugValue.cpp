#include "QVLDebugValue.h"

QVLDebugValueType QVLDebugValue::type() const {
    if (m_JSONValue.isString()) {
        return QVLDebugValueTypeString;
    }
    if (m_JSONValue.isNumber()) {
        return m_JSONValue.isBoolean() ? QVLDebugValueTypeBool : QVLDebugValueTypeNumber;
    }
    return m_JSONValue.isNull() ? QVLDebugValueTypeNull : QVLDebugValueTypeJSON;
}
