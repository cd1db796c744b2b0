#include "QVLScriptObject.h"

#include "QVLLogging.h"

namespace {

constexpr std::string_view kExposedPrefix = "js_";
constexpr const char* kScriptName = "<JS>";

} // namespace

std::optional<std::string> QVLScriptObject::webScriptNameForSelector(std::string_view selector) {
    if (!selector.starts_with(kExposedPrefix)) {
        return std::nullopt;
    }
    const std::string_view name = selector.substr(kExposedPrefix.size());
    return std::string(name.substr(0, name.find(':')));
}

bool QVLScriptObject::isSelectorExcludedFromWebScript(std::string_view selector) {
    return !webScriptNameForSelector(selector);
}

void QVLScriptObject::js_log(const QVLJSONValue& value) const {
    const QVLNamedObject script(kScriptName);
    QVLLog(QVLLogLevelDebug, kScriptName, 0, "?", &script, "%@", value);
}
