#include "QVLJournalObject.h"

#include "QVLDateFormatter.h"
#include "QVLJSONSerialization.h"
#include "QVLJournalCollection.h"
#include "QVLLogMacros.h"

#include <algorithm>

namespace {

/// Stricter than being equal: 1, 1.0 and true are equal.
bool isWrittenAlike(const QVLJSONDictionary& a, const QVLJSONDictionary& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& ours, const auto& theirs) {
        const bool isSameText = ours.value.isString() && theirs.value.isString() && ours.value == theirs.value;
        return ours.key == theirs.key && (isSameText || ours.value.isIdentical(theirs.value));
    });
}

} // namespace

QVLUnrecognizedOperationError::QVLUnrecognizedOperationError(const std::string& className, const std::string& operation)
    : std::logic_error("-[" + className + " " + operation + "]: unrecognized operation") {}

std::shared_ptr<QVLJournalObject> QVLJournalObject::initWithQVLJSONObject(const QVLJSONValue& /*JSONObject*/) {
    throw QVLUnrecognizedOperationError("QVLJournalObject", "initWithQVLJSONObject:");
}

QVLJSONValue QVLJournalObject::qvl_JSONObject() const {
    return m_JSONObject.isNothing() ? JSONObjectOfFields() : m_JSONObject;
}

QVLJSONValue QVLJournalObject::JSONObjectOfFields() const {
    throw QVLUnrecognizedOperationError(className(), "qvl_JSONObject");
}

void QVLJournalObject::reset() {
    throw QVLUnrecognizedOperationError(className(), "reset");
}

bool QVLJournalObject::isEmpty() const {
    throw QVLUnrecognizedOperationError(className(), "isEmpty");
}

bool QVLJournalObject::isEqual(const QVLObject& /*other*/) const {
    throw QVLUnrecognizedOperationError(className(), "isEqual:");
}

std::size_t QVLJournalObject::hash() const {
    throw QVLUnrecognizedOperationError(className(), "hash");
}

std::string QVLJournalObject::description() const {
    const QVLJSONValue object = qvl_JSONObject();
    const QVLJSONWriteResult text = QVLJSONSerialization::dataWithJSONObject(object);
    if (!text) {
        QVL_LOG_ERROR(this, "Invalid JSON object: %@", object);
        return defaultDescription();
    }
    return defaultDescription() + QVLStringWithFormat(" %@", text.text);
}

std::shared_ptr<QVLJSONSerializable> QVLJournalObject::copy() const {
    std::shared_ptr<QVLJournalObject> copy = copyOfFields();
    copy->m_collection = m_collection;
    copy->m_JSONObject = m_JSONObject;
    return copy;
}

std::shared_ptr<QVLJournalObject> QVLJournalObject::copyOfFields() const {
    throw QVLUnrecognizedOperationError(className(), "copy");
}

void QVLJournalObject::keepJSONObject(const QVLJSONDictionary& readFrom) {
    m_JSONObject = JSONObjectOfFields();
    if (isWrittenAlike(m_JSONObject.dictionaryOrEmpty(), readFrom)) {
        m_JSONObject = readFrom;
    }
}

void QVLJournalObject::reportChange() {
    m_JSONObject = JSONObjectOfFields();
    if (const auto collection = m_collection.lock()) {
        collection->recordDidChange(m_key);
    }
}

void qvl::addDate(std::vector<QVLJSONDictionary::Entry>& members, const char* name,
                  const std::optional<QVLDate>& date) {
    if (date) {
        members.push_back({name, QVLDateFormatter::sharedFormatter().stringFromDate(*date)});
    }
}

std::optional<QVLDate> qvl::dateFromMember(const QVLJSONDictionary& members, const char* name) {
    return QVLDateFormatter::sharedFormatter().dateFromString(members.valueForKey(name).stringView());
}

std::size_t qvl::hashOfDate(const std::optional<QVLDate>& date) {
    return date ? std::hash<QVLDate::rep>()(date->time_since_epoch().count()) : 0;
}
