#include "QVLJSONValue.h"

#include "QVLJSONNodes.h"
#include "QVLJSONSerializable.h"
#include "QVLJSONWriter.h"

#include <cmath>
#include <limits>

namespace {

// The first doubles past the ranges of the integer types; both are exact.
constexpr double kPastSigned = 9223372036854775808.0;
constexpr double kPastUnsigned = 18446744073709551616.0;

std::int64_t clampedInteger(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= kPastSigned) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return value <= -kPastSigned ? std::numeric_limits<std::int64_t>::min() : static_cast<std::int64_t>(value);
}

bool isWhole(double value) {
    return std::isfinite(value) && std::trunc(value) == value;
}

/// Never through a lossy cast: the double is turned into the integer, and only when that is exact.
bool isSameNumber(std::int64_t integer, double real) {
    return isWhole(real) && real >= -kPastSigned && real < kPastSigned && static_cast<std::int64_t>(real) == integer;
}

bool isSameNumber(std::uint64_t natural, double real) {
    return isWhole(real) && real >= 0 && real < kPastUnsigned && static_cast<std::uint64_t>(real) == natural;
}

std::size_t combined(std::size_t seed, std::size_t hash) {
    return seed ^ (hash + 0x9e3779b97f4a7c15U + (seed << 6) + (seed >> 2));
}

/// A whole double hashes as the integer that it equals.
std::size_t hashOfDouble(double value) {
    if (isWhole(value) && value >= -kPastSigned && value < kPastSigned) {
        return std::hash<std::int64_t>()(static_cast<std::int64_t>(value));
    }
    if (isWhole(value) && value >= 0 && value < kPastUnsigned) {
        return std::hash<std::uint64_t>()(static_cast<std::uint64_t>(value));
    }
    return std::hash<double>()(value);
}

} // namespace

QVLJSONValue::QVLJSONValue(const char* text)
    : QVLJSONValue(text ? QVLJSONValue(QVLJSONString(text)) : QVLJSONValue()) {}

QVLJSONValue::QVLJSONValue(QVLJSONString text) noexcept : QVLJSONValue(Tag::String, text.m_node.take()) {}

QVLJSONValue::QVLJSONValue(QVLJSONArray array) noexcept : QVLJSONValue(Tag::Array, array.m_node.take()) {}

QVLJSONValue::QVLJSONValue(QVLJSONDictionary dictionary) noexcept
    : QVLJSONValue(Tag::Dictionary, dictionary.m_node.take()) {}

QVLJSONValue QVLJSONValue::record(std::shared_ptr<QVLJSONSerializable> record) {
    return record ? QVLJSONValue(Tag::Record, new QVLJSONRecordNode(std::move(record))) : QVLJSONValue();
}

void QVLJSONValue::setUnsigned(std::uint64_t value) noexcept {
    if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        setInteger(static_cast<std::int64_t>(value));
        return;
    }
    m_tag = Tag::Unsigned;
    m_content.natural = value;
}

QVLJSONValue::Kind QVLJSONValue::kind() const noexcept {
    switch (m_tag) {
    case Tag::Nothing:
        return Kind::Nothing;
    case Tag::Null:
        return Kind::Null;
    case Tag::Boolean:
    case Tag::Signed:
    case Tag::Unsigned:
    case Tag::Double:
        return Kind::Number;
    case Tag::String:
        return Kind::String;
    case Tag::Array:
        return Kind::Array;
    case Tag::Dictionary:
        return Kind::Dictionary;
    case Tag::Record:
        return Kind::Record;
    }
    return Kind::Nothing;
}

std::optional<std::string> QVLJSONValue::qvl_castToStringValue() const {
    return isString() ? std::optional<std::string>(stringView()) : std::nullopt;
}

std::int64_t QVLJSONValue::qvl_castToIntegerValue() const noexcept {
    switch (m_tag) {
    case Tag::Boolean:
        return m_content.boolean ? 1 : 0;
    case Tag::Signed:
        return m_content.integer;
    case Tag::Unsigned:
        return std::numeric_limits<std::int64_t>::max();
    case Tag::Double:
        return clampedInteger(m_content.real);
    default:
        return 0;
    }
}

bool QVLJSONValue::qvl_castToBoolValue() const noexcept {
    switch (m_tag) {
    case Tag::Boolean:
        return m_content.boolean;
    case Tag::Signed:
        return m_content.integer != 0;
    case Tag::Unsigned:
        return true;
    case Tag::Double:
        return m_content.real != 0;
    default:
        return false;
    }
}

std::optional<QVLJSONArray> QVLJSONValue::qvl_castToArrayValue() const {
    return isArray() ? std::optional<QVLJSONArray>(arrayOrEmpty()) : std::nullopt;
}

std::optional<QVLJSONDictionary> QVLJSONValue::qvl_castToDictionaryValue() const {
    return isDictionary() ? std::optional<QVLJSONDictionary>(dictionaryOrEmpty()) : std::nullopt;
}

std::uint64_t QVLJSONValue::unsignedValue() const noexcept {
    if (m_tag == Tag::Unsigned) {
        return m_content.natural;
    }
    if (m_tag == Tag::Double && m_content.real >= kPastSigned) {
        return m_content.real < kPastUnsigned ? static_cast<std::uint64_t>(m_content.real)
                                              : std::numeric_limits<std::uint64_t>::max();
    }
    return static_cast<std::uint64_t>(qvl_castToIntegerValue());
}

double QVLJSONValue::doubleValue() const noexcept {
    switch (m_tag) {
    case Tag::Unsigned:
        return static_cast<double>(m_content.natural);
    case Tag::Double:
        return m_content.real;
    default:
        return static_cast<double>(qvl_castToIntegerValue());
    }
}

std::string_view QVLJSONValue::stringView() const noexcept {
    if (!isString() || !m_content.node) {
        return {};
    }
    return static_cast<const QVLJSONString::Node*>(m_content.node)->text;
}

QVLJSONArray QVLJSONValue::arrayOrEmpty() const noexcept {
    using Node = QVLJSONArray::Node;
    return isArray() ? QVLJSONArray(QVLJSONNodePointer<Node>::share(static_cast<const Node*>(m_content.node)))
                     : QVLJSONArray();
}

QVLJSONDictionary QVLJSONValue::dictionaryOrEmpty() const noexcept {
    using Node = QVLJSONDictionary::Node;
    return isDictionary() ? QVLJSONDictionary(QVLJSONNodePointer<Node>::share(static_cast<const Node*>(m_content.node)))
                          : QVLJSONDictionary();
}

std::shared_ptr<QVLJSONSerializable> QVLJSONValue::recordValue() const {
    return isRecord() ? static_cast<const QVLJSONRecordNode*>(m_content.node)->record : nullptr;
}

QVLJSONValue QVLJSONValue::qvl_JSONObject() const {
    switch (m_tag) {
    case Tag::Array:
        return arrayOrEmpty().qvl_JSONObject();
    case Tag::Dictionary:
        return dictionaryOrEmpty().qvl_JSONObject();
    case Tag::Record:
        return recordValue()->qvl_JSONObject();
    default:
        return *this;
    }
}

std::string QVLJSONValue::description() const {
    if (isString()) {
        return std::string(stringView());
    }
    return isNull() ? "<null>" : QVLJSONWriter::describe(*this);
}

bool QVLJSONValue::isEqual(const QVLJSONValue& other) const {
    if (isIdentical(other)) {
        return m_tag != Tag::Double || m_content.real == other.m_content.real;
    }
    if (kind() != other.kind()) {
        return false;
    }
    switch (kind()) {
    case Kind::String:
        return stringView() == other.stringView();
    case Kind::Array:
        return arrayOrEmpty() == other.arrayOrEmpty();
    case Kind::Dictionary:
        return dictionaryOrEmpty() == other.dictionaryOrEmpty();
    case Kind::Record:
        return recordValue()->isEqual(*other.recordValue());
    case Kind::Number:
        break;
    default:
        return true;
    }
    if (m_tag == Tag::Double && other.m_tag == Tag::Double) {
        return m_content.real == other.m_content.real;
    }
    if (other.m_tag == Tag::Double) {
        return other.isEqual(*this);
    }
    if (m_tag == Tag::Double) {
        return other.m_tag == Tag::Unsigned ? isSameNumber(other.m_content.natural, m_content.real)
                                            : isSameNumber(other.qvl_castToIntegerValue(), m_content.real);
    }
    if (m_tag == Tag::Unsigned || other.m_tag == Tag::Unsigned) {
        return m_tag == other.m_tag && m_content.natural == other.m_content.natural;
    }
    return qvl_castToIntegerValue() == other.qvl_castToIntegerValue();
}

std::size_t QVLJSONValue::hash() const {
    switch (m_tag) {
    case Tag::Nothing:
        return 0;
    case Tag::Null:
        return 1;
    case Tag::Boolean:
    case Tag::Signed:
        return std::hash<std::int64_t>()(qvl_castToIntegerValue());
    case Tag::Unsigned:
        return std::hash<std::uint64_t>()(m_content.natural);
    case Tag::Double:
        return hashOfDouble(m_content.real);
    case Tag::String:
        return std::hash<std::string_view>()(stringView());
    case Tag::Record:
        return recordValue()->hash();
    case Tag::Array:
    case Tag::Dictionary:
        break;
    }
    std::size_t hash = 2;
    for (const QVLJSONValue& element : arrayOrEmpty()) {
        hash = combined(hash, element.hash());
    }
    for (const QVLJSONDictionary::Entry& entry : dictionaryOrEmpty()) {
        hash = combined(combined(hash, std::hash<std::string_view>()(entry.key)), entry.value.hash());
    }
    return hash;
}

bool QVLJSONValue::isIdentical(const QVLJSONValue& other) const noexcept {
    if (m_tag != other.m_tag) {
        return false;
    }
    switch (m_tag) {
    case Tag::Nothing:
    case Tag::Null:
        return true;
    case Tag::Boolean:
        return m_content.boolean == other.m_content.boolean;
    default:
        return m_content.natural == other.m_content.natural;
    }
}

QVLJSONValue QVLJSONValue::copy() const {
    return isRecord() ? record(recordValue()->copy()) : *this;
}

std::size_t QVLJSONValue::depth() const noexcept {
    if (isArray()) {
        return arrayOrEmpty().depth();
    }
    return isDictionary() ? dictionaryOrEmpty().depth() : 0;
}
