#include "QVLDebugOutputsContent.h"

#include "QVLQuorvel.h"

QVLDebugRows qvl_outputsRows(const QVLQuorvel& quorvel) {
    const QVLJSONDictionary overrides = quorvel.outputsOverrides();
    QVLDebugRows rows;
    for (const std::string& key : quorvel.outputKeys()) {
        const std::shared_ptr<QVLOutput> output = quorvel.outputForKey(key);
        rows.push_back(QVLDebugDataSourceObject::initWithKey(key, output ? output->genericValue() : QVLJSONValue(),
                                                             overrides.valueForKey(key)));
    }
    return rows;
}

std::optional<std::string> qvl_outputDefaultsKey(const QVLQuorvel& quorvel, std::ptrdiff_t clickedRow) {
    const std::vector<std::string> keys = quorvel.outputKeys();
    if (clickedRow < 0 || clickedRow >= std::ssize(keys)) {
        return std::nullopt;
    }
    return kQVLOutputOverrideDefaultsPrefix + keys[static_cast<std::size_t>(clickedRow)];
}
