#include "QVLObject.h"

#include <cstdio>
#include <functional>
#include <utility>

QVLObject::~QVLObject() = default;

std::string QVLObject::description() const {
    return defaultDescription();
}

bool QVLObject::isEqual(const QVLObject& other) const {
    return this == &other;
}

std::size_t QVLObject::hash() const {
    return std::hash<const QVLObject*>()(this);
}

std::string QVLObject::defaultDescription() const {
    char address[32];
    std::snprintf(address, sizeof address, "%p", static_cast<const void*>(this));
    return "<" + className() + ": " + address + ">";
}

QVLNamedObject::QVLNamedObject(std::string name) : m_name(std::move(name)) {}

std::string QVLNamedObject::className() const {
    return m_name;
}

std::string QVLNamedObject::description() const {
    return m_name;
}
