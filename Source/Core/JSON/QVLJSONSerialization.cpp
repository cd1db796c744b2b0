#include "QVLJSONSerialization.h"

#include "QVLJSONReader.h"
#include "QVLJSONWriter.h"
#include "QVLUTF8.h"

#include <algorithm>
#include <cmath>

namespace {

bool isContainer(const QVLJSONValue& value) {
    return value.isDictionary() || value.isArray();
}

bool isValid(const QVLJSONValue& value) {
    switch (value.kind()) {
    case QVLJSONValue::Kind::Null:
        return true;
    case QVLJSONValue::Kind::Number:
        return std::isfinite(value.doubleValue());
    case QVLJSONValue::Kind::String:
        return qvl::isValidUTF8(value.stringView());
    case QVLJSONValue::Kind::Array: {
        const QVLJSONArray array = value.arrayOrEmpty();
        return std::all_of(array.begin(), array.end(), isValid);
    }
    case QVLJSONValue::Kind::Dictionary: {
        const QVLJSONDictionary dictionary = value.dictionaryOrEmpty();
        return std::all_of(dictionary.begin(), dictionary.end(), [](const QVLJSONDictionary::Entry& entry) {
            return qvl::isValidUTF8(entry.key) && isValid(entry.value);
        });
    }
    default:
        return false;
    }
}

} // namespace

bool QVLJSONSerialization::isValidJSONObject(const QVLJSONValue& value) {
    return isContainer(value) && isValid(value);
}

QVLJSONReadResult QVLJSONSerialization::JSONObjectWithData(std::string_view data, Reading reading) {
    QVLJSONReadResult result = QVLReadJSON(data);
    if (result && reading == Reading::Documents && !isContainer(result.value)) {
        return {{}, "The top level is neither an object nor an array. (at byte 0)"};
    }
    return result;
}

QVLJSONWriteResult QVLJSONSerialization::dataWithJSONObject(const QVLJSONValue& value, Writing writing) {
    if (!isContainer(value)) {
        return {{}, "The top level is neither an object nor an array."};
    }
    return dataWithFragment(value, writing);
}

QVLJSONWriteResult QVLJSONSerialization::dataWithFragment(const QVLJSONValue& value, Writing writing) {
    QVLJSONWriter writer(writing);
    writer.write(value);
    if (!writer.error().empty()) {
        return {{}, "Cannot be written as JSON: " + writer.error() + "."};
    }
    return {writer.takeText(), {}};
}
