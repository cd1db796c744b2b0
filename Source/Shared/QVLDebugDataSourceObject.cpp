#include "QVLDebugDataSourceObject.h"

std::shared_ptr<QVLDebugDataSourceObject> QVLDebugDataSourceObject::initWithKey(std::string key, QVLDebugValue value,
                                                                                QVLDebugValue overrideValue) {
    return std::shared_ptr<QVLDebugDataSourceObject>(
        new QVLDebugDataSourceObject(std::move(key), std::move(value), std::move(overrideValue)));
}

QVLDebugDataSourceObject::QVLDebugDataSourceObject(std::string key, QVLDebugValue value, QVLDebugValue overrideValue)
    : m_key(std::move(key)),
      m_value(std::move(value)),
      m_overrideValue(std::move(overrideValue)),
      m_valueType(m_value.type()) {}

QVLDebugDataSourceObject::~QVLDebugDataSourceObject() = default;
