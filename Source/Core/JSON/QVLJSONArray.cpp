#include "QVLJSONArray.h"

#include "QVLJSONNodes.h"
#include "QVLJSONSerializable.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr std::string_view kByNameLookupKey = "qvl_JSONObject";

std::size_t depthAround(const std::vector<QVLJSONValue>& values) {
    std::size_t depth = 0;
    for (const QVLJSONValue& value : values) {
        depth = std::max(depth, value.depth());
    }
    if (depth >= QVLJSONValue::kMaximumDepth) {
        throw std::length_error("JSON array is nested too deep");
    }
    return depth + 1;
}

std::vector<QVLJSONValue> withoutGaps(std::vector<QVLJSONValue> values) {
    for (QVLJSONValue& value : values) {
        if (value.isNothing()) {
            value = nullptr;
        }
    }
    return values;
}

/// An element answers a by-name lookup, and a dictionary answers one with its own member.
QVLJSONValue JSONObjectOfElement(const QVLJSONValue& element) {
    return element.isDictionary() ? element.dictionaryOrEmpty().valueForKey(kByNameLookupKey)
                                  : element.qvl_JSONObject();
}

} // namespace

QVLJSONArray::Node::Node(std::vector<QVLJSONValue> values)
    : values(std::move(values)), depth(depthAround(this->values)) {}

QVLJSONArray::QVLJSONArray(std::initializer_list<QVLJSONValue> values)
    : QVLJSONArray(std::vector<QVLJSONValue>(values)) {}
QVLJSONArray::QVLJSONArray(std::vector<QVLJSONValue> values)
    : m_node(values.empty() ? QVLJSONNodePointer<Node>()
                            : QVLJSONNodePointer<Node>::adopt(new Node(withoutGaps(std::move(values))))) {}
QVLJSONArray::QVLJSONArray(QVLJSONNodePointer<Node> node) noexcept : m_node(std::move(node)) {}

QVLJSONArray QVLJSONArray::fromStrings(const std::vector<std::string>& texts) {
    return QVLJSONArray(std::vector<QVLJSONValue>(texts.begin(), texts.end()));
}

std::optional<QVLJSONArray> QVLJSONArray::arrayWithQVLJSONArray(const QVLJSONValue& JSONArray,
                                                                const QVLRecordClass& valueClass) {
    if (JSONArray.isNothing()) {
        return std::nullopt;
    }
    if (!JSONArray.isArray()) {
        throw std::invalid_argument("Bad array object: " + JSONArray.description());
    }
    if (!valueClass.initWithQVLJSONObject) {
        throw std::invalid_argument("Class must conform to QVLJSONCompatible protocol");
    }
    std::vector<QVLJSONValue> records;
    records.reserve(JSONArray.arrayOrEmpty().count());
    for (const QVLJSONValue& element : JSONArray.arrayOrEmpty()) {
        records.push_back(QVLJSONValue::record(valueClass.initWithQVLJSONObject(element)));
        if (records.back().isNothing()) {
            throw std::invalid_argument("Array element cannot be nothing");
        }
    }
    return QVLJSONArray(std::move(records));
}

std::size_t QVLJSONArray::count() const noexcept {
    return m_node ? m_node->values.size() : 0;
}

QVLJSONValue QVLJSONArray::valueAtIndex(std::size_t index) const noexcept {
    return index < count() ? m_node->values[index] : QVLJSONValue();
}

QVLJSONArray::const_iterator QVLJSONArray::begin() const noexcept {
    return m_node ? m_node->values.data() : nullptr;
}

QVLJSONArray::const_iterator QVLJSONArray::end() const noexcept {
    return m_node ? m_node->values.data() + m_node->values.size() : nullptr;
}

QVLJSONValue QVLJSONArray::qvl_JSONObject() const {
    std::vector<QVLJSONValue> converted;
    converted.reserve(count());
    bool isChanged = false;
    for (const QVLJSONValue& element : *this) {
        converted.push_back(JSONObjectOfElement(element));
        isChanged = isChanged || !converted.back().isIdentical(element);
    }
    return isChanged ? QVLJSONValue(QVLJSONArray(std::move(converted))) : QVLJSONValue(*this);
}

std::size_t QVLJSONArray::depth() const noexcept {
    return m_node ? m_node->depth : 1;
}

bool QVLJSONArray::isEqual(const QVLJSONArray& other) const {
    return isIdentical(other) || std::equal(begin(), end(), other.begin(), other.end());
}
