#include "Fuzzer.h"
#include "MemoryPlatform.h"
#include "QVLJSONSerialization.h"
#include "QVLJournals.h"

#include <stdexcept>

namespace {

/// Null for a file that is malformed inside.
std::shared_ptr<QVLJournals> load(const QVLJSONValue& JSONObject) {
    try {
        return QVLJournals::initWithQVLJSONObject(JSONObject);
    } catch (const std::invalid_argument&) {
        return nullptr;
    } catch (const QVLUnrecognizedOperationError&) {
        return nullptr;
    }
}

void record(QVLJournals& journals) {
    for (const std::string& key : journals.allEventKeys()) {
        journals.eventForKey(key)->trigger();
    }
    for (const std::string& key : journals.allFlagKeys()) {
        journals.flagForKey(key)->updateFlag(true);
    }
}

} // namespace

/// A journals file in either of its forms. What loads is saved in the newer one, which loads as the same journals.
void fuzz(std::string_view text) {
    const MemoryPlatform platform;
    const QVLJSONReadResult read = QVLJSONSerialization::JSONObjectWithData(text);
    const std::shared_ptr<QVLJournals> journals = load(read.value.dictionaryOrEmpty());
    if (!journals) {
        return;
    }
    const QVLJSONValue saved = journals->qvl_JSONObject();
    expect(QVLJSONSerialization::isValidJSONObject(saved), "journals can be saved");
    expect(journals->publishedJSONObject() == saved, "what is loaded is published");
    const std::shared_ptr<QVLJournals> again = load(saved);
    expect(again && again->qvl_JSONObject() == saved, "what is saved loads as the same journals");

    record(*journals);
    expect(QVLJSONSerialization::isValidJSONObject(journals->qvl_JSONObject()), "journals can still be saved");
    expect(journals->publishedJSONObject() == journals->qvl_JSONObject(), "what is recorded is published");
}
