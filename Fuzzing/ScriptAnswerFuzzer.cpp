#include "MemoryPlatform.h"
#include "Outputs.h"
#include "QVLJSONSerialization.h"
#include "QVLQuorvelKeys.h"

namespace {

/// No value for what is no answer.
std::optional<QVLJSONDictionary> answerOf(const QVLJSONValue& value) {
    const std::optional<QVLJSONDictionary> answer = value.qvl_castToDictionaryValue();
    return answer && !answer->hasKey(kQVLScriptErrorKey) ? answer : std::nullopt;
}

} // namespace

/// The text that a rules script answers, through loading the script and a whole evaluation.
void fuzz(std::string_view text) {
    static constexpr const char* kPath = "/host/quorvel/OutputsCache.json";
    static const QVLJSONDictionary kOldOutputs{{"showTour", true}, {"%usedInputs", QVLJSONArray{}}};
    static const std::string kOldAnswer = QVLJSONSerialization::dataWithJSONObject(kOldOutputs).text;

    MemoryPlatform platform;
    platform.files()[kPath] = kOldAnswer;
    platform.answer = text;
    const std::shared_ptr<QVLQuorvel> engine = QVLQuorvel::initWithDirectory("/host", nullptr, nullptr);
    engine->start();
    engine->performOnQueue([](QVLQuorvel& quorvel) { quorvel.loadScriptWithJSContent("// Quorvel 1.0.js"); });
    engine->setInputs({{"appVersion", "4.4.2"}, {"plan", "free"}});
    platform.runLoop->runUntilIdle();

    const auto answer = answerOf(QVLJSONSerialization::JSONObjectWithData(text).value);
    expect(engine->outputs() == answer.value_or(kOldOutputs), "an answer becomes the outputs whole or not at all");
    expect(QVLJSONSerialization::JSONObjectWithData(platform.files()[kPath]).value == QVLJSONValue(engine->outputs()),
           "the outputs are saved");
    readOutputs(*engine);
}
