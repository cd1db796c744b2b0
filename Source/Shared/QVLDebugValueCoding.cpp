#include "QVLDebugValueCoding.h"

#include "QVLDebugNaturalLanguageDate.h"
#include "QVLJSONSerialization.h"
#include "QVLLogMacros.h"

namespace {

std::optional<std::string> JSONText(const QVLJSONValue& value) {
    QVLJSONWriteResult written = QVLJSONSerialization::dataWithFragment(value);
    if (!written) {
        QVL_LOG_ERROR(nullptr, "Invalid JSON object: %@", value);
        return std::nullopt;
    }
    return std::move(written.text);
}

bool booleanFromString(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t+-0");
    return start != std::string_view::npos && std::string_view("YyTt123456789").find(text[start]) != std::string::npos;
}

std::optional<QVLDate> dateFromString(std::string_view text, const QVLDebugDateFormatter& formatter) {
    if (const std::optional<QVLDate> date = formatter.dateFromString(text)) {
        return date;
    }
    return qvl_dateFromNaturalLanguage(text, QVLPlatform::current()->clock->now());
}

} // namespace

std::optional<std::string> QVLDebugValueCoding::stringFromValue(const QVLDebugValue& value,
                                                                QVLDebugValueType type) const {
    if (value.isNothing() || type == QVLDebugValueTypeBool) {
        return std::string();
    }
    if (value.JSONValue().isNull()) {
        return std::nullopt;
    }
    switch (type) {
    case QVLDebugValueTypeJSON:
        return JSONText(value.JSONValue());
    case QVLDebugValueTypeNumber:
        return numberFormatter.stringFromNumber(value.JSONValue());
    case QVLDebugValueTypeNull:
        return std::nullopt;
    case QVLDebugValueTypeDate:
        return value.date() ? std::optional(dateFormatter.stringFromDate(*value.date())) : std::nullopt;
    case QVLDebugValueTypeString:
    case QVLDebugValueTypeBool:
        break;
    }
    return value.JSONValue().description();
}

QVLDebugValue QVLDebugValueCoding::valueFromString(std::string_view text, QVLDebugValueType type) const {
    if (text.empty()) {
        return QVLJSONValue(nullptr);
    }
    switch (type) {
    case QVLDebugValueTypeJSON:
        return QVLJSONSerialization::JSONObjectWithData(text, QVLJSONSerialization::Reading::Fragments).value;
    case QVLDebugValueTypeNumber:
        return numberFormatter.numberFromString(text);
    case QVLDebugValueTypeBool:
        return QVLJSONValue(booleanFromString(text));
    case QVLDebugValueTypeDate:
        return dateFromString(text, dateFormatter);
    case QVLDebugValueTypeString:
    case QVLDebugValueTypeNull:
        break;
    }
    // Text that is no UTF-8 could not be written to files.
    const QVLJSONValue string(text);
    return QVLJSONSerialization::dataWithFragment(string) ? string : QVLJSONValue();
}
