#include "QVLJSONDictionary.h"

#include "QVLJSONNodes.h"
#include "QVLJSONSerializable.h"
#include "QVLJSONSerialization.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace {

using Entry = QVLJSONDictionary::Entry;

std::size_t depthAround(const std::vector<Entry>& entries) {
    std::size_t depth = 0;
    for (const Entry& entry : entries) {
        depth = std::max(depth, entry.value.depth());
    }
    if (depth >= QVLJSONValue::kMaximumDepth) {
        throw std::length_error("JSON dictionary is nested too deep");
    }
    return depth + 1;
}

bool comesBefore(const Entry& a, const Entry& b) {
    return a.key < b.key;
}

bool hasSameKey(const Entry& a, const Entry& b) {
    return a.key == b.key;
}

bool isOutOfOrder(const Entry& a, const Entry& b) {
    return !comesBefore(a, b);
}

/// Keeps the order of equal keys. Small ones, as most are, are sorted without the memory that the library's sort takes.
void sortByKey(std::vector<Entry>& entries) {
    constexpr std::size_t kSmall = 24;
    if (entries.size() > kSmall) {
        std::stable_sort(entries.begin(), entries.end(), comesBefore);
        return;
    }
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        std::rotate(std::upper_bound(entries.begin(), entry, *entry, comesBefore), entry, std::next(entry));
    }
}

std::vector<Entry> sortedAndUnique(std::vector<Entry> entries) {
    std::erase_if(entries, [](const Entry& entry) { return entry.value.isNothing(); });
    if (std::adjacent_find(entries.begin(), entries.end(), isOutOfOrder) == entries.end()) {
        return entries;
    }
    sortByKey(entries);
    // Of equal keys the sort left the one given first in front, and that one stays.
    entries.erase(std::unique(entries.begin(), entries.end(), hasSameKey), entries.end());
    return entries;
}

} // namespace

QVLJSONDictionary::Node::Node(std::vector<Entry> entries, std::string compactText)
    : entries(std::move(entries)), depth(depthAround(this->entries)), compactText(std::move(compactText)) {}

QVLJSONDictionary::QVLJSONDictionary(std::initializer_list<Entry> entries)
    : QVLJSONDictionary(std::vector<Entry>(entries)) {}
QVLJSONDictionary::QVLJSONDictionary(std::vector<Entry> entries)
    : QVLJSONDictionary(fromSorted(sortedAndUnique(std::move(entries)))) {}
QVLJSONDictionary::QVLJSONDictionary(QVLJSONNodePointer<Node> node) noexcept : m_node(std::move(node)) {}

QVLJSONDictionary QVLJSONDictionary::fromSorted(std::vector<Entry> entries) {
    if (entries.empty()) {
        return {};
    }
    return QVLJSONDictionary(QVLJSONNodePointer<Node>::adopt(new Node(std::move(entries))));
}

QVLJSONDictionary QVLJSONDictionary::merged(const QVLJSONDictionary& under, const QVLJSONDictionary& over) {
    if (over.isEmpty() || under.isIdentical(over)) {
        return under;
    }
    if (under.isEmpty()) {
        return over;
    }
    std::vector<Entry> entries;
    entries.reserve(under.count() + over.count());
    // Of two equal keys the union takes the one of the first range.
    std::set_union(over.begin(), over.end(), under.begin(), under.end(), std::back_inserter(entries), comesBefore);
    return fromSorted(std::move(entries));
}

std::optional<QVLJSONDictionary> QVLJSONDictionary::dictionaryWithQVLJSONObject(const QVLJSONValue& JSONObject,
                                                                                const QVLRecordClass& valueClass) {
    if (JSONObject.isNothing()) {
        return std::nullopt;
    }
    if (!JSONObject.isDictionary()) {
        throw std::invalid_argument("Bad object: " + JSONObject.description());
    }
    if (!valueClass.initWithQVLJSONObject) {
        throw std::invalid_argument("Class must conform to QVLJSONCompatible protocol");
    }
    std::vector<Entry> records;
    records.reserve(JSONObject.dictionaryOrEmpty().count());
    for (const Entry& entry : JSONObject.dictionaryOrEmpty()) {
        records.push_back({entry.key, QVLJSONValue::record(valueClass.initWithQVLJSONObject(entry.value))});
    }
    return QVLJSONDictionary(std::move(records));
}

std::size_t QVLJSONDictionary::count() const noexcept {
    return m_node ? m_node->entries.size() : 0;
}

QVLJSONValue QVLJSONDictionary::valueForKey(std::string_view key) const noexcept {
    const const_iterator position = lowerBound(key);
    return position != end() && position->key == key ? position->value : QVLJSONValue();
}

bool QVLJSONDictionary::hasKey(std::string_view key) const noexcept {
    const const_iterator position = lowerBound(key);
    return position != end() && position->key == key;
}

std::vector<std::string> QVLJSONDictionary::allKeys() const {
    std::vector<std::string> keys;
    keys.reserve(count());
    for (const Entry& entry : *this) {
        keys.push_back(entry.key.text());
    }
    return keys;
}

QVLJSONDictionary::const_iterator QVLJSONDictionary::begin() const noexcept {
    return m_node ? m_node->entries.data() : nullptr;
}

QVLJSONDictionary::const_iterator QVLJSONDictionary::end() const noexcept {
    return m_node ? m_node->entries.data() + m_node->entries.size() : nullptr;
}

QVLJSONDictionary::const_iterator QVLJSONDictionary::lowerBound(std::string_view key) const noexcept {
    return std::lower_bound(begin(), end(), key,
                            [](const Entry& entry, std::string_view wanted) { return entry.key.text() < wanted; });
}

QVLJSONDictionary QVLJSONDictionary::withValueForKey(QVLJSONValue value, const QVLJSONString& key) const {
    const const_iterator position = lowerBound(key);
    const bool isReplacing = position != end() && position->key == key;
    std::vector<Entry> entries;
    entries.reserve(count() + 1);
    entries.insert(entries.end(), begin(), position);
    if (!value.isNothing()) {
        entries.push_back({key, std::move(value)});
    }
    entries.insert(entries.end(), isReplacing ? position + 1 : position, end());
    return fromSorted(std::move(entries));
}

QVLJSONDictionary QVLJSONDictionary::withCompactText() const {
    if (isEmpty()) {
        return *this;
    }
    QVLJSONWriteResult written = QVLJSONSerialization::dataWithJSONObject(*this);
    if (!written) {
        return *this;
    }
    // The writer leaves room that a text that is kept has no use for.
    written.text.shrink_to_fit();
    return QVLJSONDictionary(QVLJSONNodePointer<Node>::adopt(new Node(m_node->entries, std::move(written.text))));
}

const std::string& QVLJSONDictionary::compactText() const noexcept {
    static const std::string kNone;
    return m_node ? m_node->compactText : kNone;
}

QVLJSONValue QVLJSONDictionary::qvl_JSONObject() const {
    std::vector<Entry> converted;
    converted.reserve(count());
    bool isChanged = false;
    for (const Entry& entry : *this) {
        QVLJSONValue value = entry.value.qvl_JSONObject();
        isChanged = isChanged || !value.isIdentical(entry.value);
        if (!value.isNothing()) {
            converted.push_back({entry.key, std::move(value)});
        }
    }
    return isChanged ? fromSorted(std::move(converted)) : *this;
}

std::size_t QVLJSONDictionary::depth() const noexcept {
    return m_node ? m_node->depth : 1;
}

bool QVLJSONDictionary::isEqual(const QVLJSONDictionary& other) const {
    if (isIdentical(other)) {
        return true;
    }
    return std::equal(begin(), end(), other.begin(), other.end(),
                      [](const Entry& a, const Entry& b) { return a.key == b.key && a.value == b.value; });
}
