#include "Fuzzer.h"
#include "QVLJSONSerialization.h"

using Reading = QVLJSONSerialization::Reading;
using Writing = QVLJSONSerialization::Writing;

/// JSON text of a file, a reply or a script. What reads must write, in both forms, and read back as what it was.
void fuzz(std::string_view text) {
    const QVLJSONReadResult document = QVLJSONSerialization::JSONObjectWithData(text);
    const QVLJSONReadResult read = QVLJSONSerialization::JSONObjectWithData(text, Reading::Fragments);
    expect(static_cast<bool>(read) != read.value.isNothing(), "a value, or the reason why there is none");
    expect(!document || document.value == read.value, "a document is a fragment too");
    if (!read) {
        return;
    }
    expect(read.value.depth() <= QVLJSONValue::kMaximumDepth, "no value is nested too deep");
    for (const Writing writing : {Writing::Compact, Writing::Pretty}) {
        const QVLJSONWriteResult written = QVLJSONSerialization::dataWithFragment(read.value, writing);
        expect(static_cast<bool>(written), "what reads can be written");
        const QVLJSONReadResult again = QVLJSONSerialization::JSONObjectWithData(written.text, Reading::Fragments);
        expect(again && again.value == read.value, "what is written reads back as what it was");
        expect(again.value.hash() == read.value.hash(), "equal values hash alike");
    }
}
