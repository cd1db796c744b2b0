#pragma once

#include "QVLJSONValue.h"
#include "QVLObject.h"

/// An object that converts itself to JSON.
class QVL_EXPORT QVLJSONSerializable : public QVLObject {
public:
    /// The record as a JSON value.
    [[nodiscard]] virtual QVLJSONValue qvl_JSONObject() const = 0;
    /// An independent record that holds the same.
    [[nodiscard]] virtual std::shared_ptr<QVLJSONSerializable> copy() const = 0;
};

/// A record that is also made from JSON: its class has a static `initWithQVLJSONObject(const QVLJSONValue&)` that
/// returns a `std::shared_ptr` to a new record.
class QVL_EXPORT QVLJSONCompatible : public QVLJSONSerializable {};

/// A record class handed over as a value, for decoding and for collections that make records by themselves.
struct QVL_EXPORT QVLRecordClass {
    /// The class's name.
    const char* name;
    /// Makes a record; null for a class that cannot be made from JSON.
    std::shared_ptr<QVLJSONSerializable> (*initWithQVLJSONObject)(const QVLJSONValue& JSONObject);
    /// Makes an empty record; null for a class that cannot be made empty.
    std::shared_ptr<QVLJSONSerializable> (*init)();
    /// Whether the class derives from `QVLJournalObject`.
    bool isJournalClass;

    friend bool operator==(const QVLRecordClass& a, const QVLRecordClass& b) {
        return a.initWithQVLJSONObject == b.initWithQVLJSONObject && a.isJournalClass == b.isJournalClass;
    }
};
