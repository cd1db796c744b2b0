#include "QVLLinuxJavaScriptEngine.h"

#include "QVLLinuxJavaScriptContext.h"
#include "QVLLinuxJavaScriptText.h"

#include <jsc/jsc.h>

#include <mutex>

namespace {

/// Without it, compiled loops are not stopped. Has no effect once a first machine runs.
void enablePollingTraps() {
    static std::once_flag once;
    std::call_once(once, [] { jsc_options_set_boolean("usePollingTraps", TRUE); });
}

} // namespace

std::unique_ptr<QVLJavaScriptContext>
QVLLinuxJavaScriptEngine::makeContext(QVLJavaScriptContext::InterruptionTest shouldInterrupt) {
    enablePollingTraps();
    const JSContextGroupRef group = JSContextGroupCreate();
    if (!group) {
        return nullptr;
    }
    return std::make_unique<QVLLinuxJavaScriptContext>(group, std::move(shouldInterrupt));
}

std::shared_ptr<const QVLJavaScriptText> QVLLinuxJavaScriptEngine::makeText(std::string_view text) {
    return std::make_shared<QVLLinuxJavaScriptText>(text);
}
