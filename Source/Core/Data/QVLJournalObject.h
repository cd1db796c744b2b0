#pragma once

#include "QVLDate.h"
#include "QVLJSONDictionary.h"
#include "QVLJSONSerializable.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

class QVLJournalCollection;

/// Thrown by an operation that a class was called for but does not provide.
class QVL_EXPORT QVLUnrecognizedOperationError : public std::logic_error {
public:
    QVLUnrecognizedOperationError(const std::string& className, const std::string& operation);
};

/// The base of journal records, which belong to a journal collection and report each change to it.
///
/// Changed on the main thread. Abstract: every operation that a record must provide throws
/// `QVLUnrecognizedOperationError` here.
class QVL_EXPORT QVLJournalObject : public QVLJSONCompatible {
public:
    [[nodiscard]] static std::shared_ptr<QVLJournalObject> initWithQVLJSONObject(const QVLJSONValue& JSONObject);
    /// The record's fields as JSON; made when they change, not when they are asked for.
    [[nodiscard]] QVLJSONValue qvl_JSONObject() const final;
    /// Clears every field and reports one change.
    virtual void reset();
    /// True when the record holds nothing.
    [[nodiscard]] virtual bool isEmpty() const;
    [[nodiscard]] bool isEqual(const QVLObject& other) const override;
    [[nodiscard]] std::size_t hash() const override;

    /// The default text followed by the compact JSON text. A record that is no valid JSON object logs
    /// "Invalid JSON object: %@" and gives the default text alone.
    [[nodiscard]] std::string description() const override;
    /// A record of the same class with every field, owned by the same collection. Reports nothing.
    [[nodiscard]] std::shared_ptr<QVLJSONSerializable> copy() const override;

    /// The collection that is told of changes, or null. Set and cleared by the collection; held weakly. The key is the
    /// one that the record stands under; without one, the collection looks through all its records for what changed.
    [[nodiscard]] std::shared_ptr<QVLJournalCollection> collection() const { return m_collection.lock(); }
    void setCollection(const std::weak_ptr<QVLJournalCollection>& collection, QVLJSONString key = {}) {
        m_collection = collection;
        m_key = std::move(key);
    }

    [[nodiscard]] std::string className() const override { return "QVLJournalObject"; }

protected:
    /// Called after each change of a field: lets the owning collection, if there is one, look for what changed.
    void reportChange();
    /// Called after the fields have been read without a report. What they were read from is kept when it is what they
    /// give again, as it mostly is: thousands of records would otherwise be held twice while they are loaded.
    void keepJSONObject(const QVLJSONDictionary& readFrom);
    [[nodiscard]] virtual QVLJSONValue JSONObjectOfFields() const;
    /// An empty record of the same class with the fields of this one; `copy` adds the collection.
    [[nodiscard]] virtual std::shared_ptr<QVLJournalObject> copyOfFields() const;

private:
    std::weak_ptr<QVLJournalCollection> m_collection;
    QVLJSONString m_key;
    /// Nothing for a new record. Written on the main thread alone; what other threads see are copies.
    QVLJSONValue m_JSONObject;
};

namespace qvl {

/// Adds the date's text under the member name, when there is a date.
void addDate(std::vector<QVLJSONDictionary::Entry>& members, const char* name, const std::optional<QVLDate>& date);

/// The date in a member that holds a date's text; no value otherwise.
[[nodiscard]] std::optional<QVLDate> dateFromMember(const QVLJSONDictionary& members, const char* name);

/// A date's share of a record's hash; a missing one has none.
[[nodiscard]] std::size_t hashOfDate(const std::optional<QVLDate>& date);

} // namespace qvl
