#include "QVLDebugInputsContent.h"

#include "QVLDebugInputsDataSourceObject.h"
#include "QVLDebugLocalization.h"
#include "QVLFormat.h"
#include "QVLInputsManager.h"
#include "QVLQuorvel.h"

#include <algorithm>

QVLDebugRows qvl_inputsRows(const QVLQuorvel& quorvel, const QVLInputsManager* inputsManager) {
    const QVLJSONDictionary inputs = quorvel.inputs();
    const QVLJSONDictionary overrides = quorvel.inputsOverrides();
    QVLDebugRows rows;
    rows.reserve(inputs.count());
    for (const auto& [key, value] : inputs) {
        const double time = inputsManager ? inputsManager->generationTimeForInput(key.text()) : 0;
        rows.push_back(
            QVLDebugInputsDataSourceObject::initWithKey(key.text(), value, overrides.valueForKey(key), time));
    }
    return rows;
}

std::string qvl_inputsGenerationText(const QVLInputsManager* inputsManager) {
    if (!inputsManager) {
        return {};
    }
    return QVLFormatWithArguments(qvl_localizedString("Inputs generated in %.3f (%.3f) seconds"),
                                  {inputsManager->mainThreadGenerationTime(), inputsManager->totalGenerationTime()});
}

std::string qvl_generationTimeText(double generationTime) {
    return QVLStringWithFormat("%.4fs", generationTime);
}

std::optional<std::string> qvl_inputDefaultsKey(const QVLQuorvel& quorvel, std::ptrdiff_t clickedRow) {
    std::vector<std::string> keys = quorvel.inputKeys();
    if (clickedRow < 0 || clickedRow >= std::ssize(keys)) {
        return std::nullopt;
    }
    std::sort(keys.begin(), keys.end());
    return kQVLInputOverrideDefaultsPrefix + keys[static_cast<std::size_t>(clickedRow)];
}
