#include "MemoryPlatform.h"
#include "Outputs.h"
#include "QVLJSONSerialization.h"

/// The file of the last answer, with which an engine starts.
void fuzz(std::string_view text) {
    static constexpr const char* kPath = "/host/quorvel/OutputsCache.json";
    const MemoryPlatform platform;
    platform.files()[kPath] = text;
    const std::shared_ptr<QVLQuorvel> engine = QVLQuorvel::initWithDirectory("/host", nullptr, nullptr);
    const QVLJSONValue cached = QVLJSONSerialization::JSONObjectWithData(text).value;
    expect(engine->outputs() == cached.dictionaryOrEmpty(), "the outputs are those of the file");
    expect(platform.files().contains(kPath) == cached.isDictionary(), "only a file without outputs is removed");
    engine->start();
    readOutputs(*engine);
    engine->setDisableOutputs(true);
    expect(engine->outputKeys().empty(), "switched off, there are no outputs");
}
