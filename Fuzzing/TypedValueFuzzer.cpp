#include "Fuzzer.h"
#include "MemoryPlatform.h"
#include "QVLDebugValueCoding.h"
#include "QVLJSONSerialization.h"

/// A text typed into the debug console's value editor: its first byte chooses the type of the value that is shown. What
/// is accepted can be written to files, and has a text that means the same again.
void fuzz(std::string_view text) {
    if (text.empty()) {
        return;
    }
    const MemoryPlatform platform;
    const auto type = static_cast<QVLDebugValueType>(text.front() % 6);
    const std::string_view typed = text.substr(1);
    const QVLDebugValueCoding coding;
    const QVLDebugValue value = coding.valueFromString(typed, type);
    expect(!typed.empty() || value.JSONValue().isNull(), "the empty text is null");
    const bool isJSON = static_cast<bool>(QVLJSONSerialization::dataWithFragment(value.JSONValue()));
    expect(value.isNothing() || value.date() || isJSON, "what is accepted is valid JSON");
    const std::optional<std::string> shown = coding.stringFromValue(value, type);
    // A boolean is shown by a checkbox, and a row of null shows no text of its own.
    const bool hasText = type != QVLDebugValueTypeBool && type != QVLDebugValueTypeNull;
    if (hasText && !value.isNothing() && !value.JSONValue().isNull()) {
        expect(shown.has_value(), "what is accepted has a text");
        // A time that comes twice, when summer time ends, is read as the first.
        expect(value.date() || coding.valueFromString(*shown, type) == value, "the text means the same again");
    }
}
