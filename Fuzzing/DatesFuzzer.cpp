#include "Fuzzer.h"
#include "QVLDateFormatter.h"

/// A date of a feed, a journal or the user defaults. What is read is written in one form, which reads back as itself.
void fuzz(std::string_view text) {
    const QVLDateFormatter& formatter = QVLDateFormatter::sharedFormatter();
    const std::optional<QVLDate> date = formatter.dateFromString(text);
    if (!date) {
        return;
    }
    const std::string written = formatter.stringFromDate(*date);
    const std::optional<QVLDate> again = formatter.dateFromString(written);
    expect(again.has_value(), "what is written can be read");
    expect(formatter.stringFromDate(*again) == written, "what is written reads back as itself");
    // A zone can carry a date of the first or the last day over the end of the years that can be written.
    const bool isHeld = *again != *date;
    expect(!isHeld || written == "0000-01-01T00:00:00Z" || written == "9999-12-31T23:59:59Z",
           "only a date beyond the first and the last is held at these");
    expect(!text.ends_with('Z') || written == text, "a text without an offset is the one form already");
}
