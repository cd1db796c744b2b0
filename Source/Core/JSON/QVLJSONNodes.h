#pragma once

#include "QVLJSONValue.h"

#include <vector>

// What the handles of the JSON types point at. Only their own sources see inside.

class QVLJSONString::Node final : public QVLJSONNode {
public:
    explicit Node(std::string text) : text(std::move(text)) {}
    const std::string text;
};

class QVLJSONArray::Node final : public QVLJSONNode {
public:
    explicit Node(std::vector<QVLJSONValue> values);
    const std::vector<QVLJSONValue> values;
    const std::size_t depth;
};

class QVLJSONDictionary::Node final : public QVLJSONNode {
public:
    explicit Node(std::vector<Entry> entries, std::string compactText = {});
    const std::vector<Entry> entries;
    const std::size_t depth;
    /// Empty for a dictionary that does not carry its text.
    const std::string compactText;
};

class QVLJSONRecordNode final : public QVLJSONNode {
public:
    explicit QVLJSONRecordNode(std::shared_ptr<QVLJSONSerializable> record) : record(std::move(record)) {}
    const std::shared_ptr<QVLJSONSerializable> record;
};
