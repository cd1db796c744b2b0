#include "QVLLogMacros.h"
#include "QVLQuorvel.h"
#include "QVLScript.h"
#include "QVLScriptRunner.h"
#include "QVLUTF8.h"

#include <array>
#include <cstdint>

// Loading: from a file or a text to a machine whose script can be called.

namespace {

constexpr std::string_view kGlobalObject = "quorvel";
constexpr std::string_view kProcessMember = "process";
constexpr std::string_view kLogLevelMember = "logLevel";

struct LevelName {
    std::string_view name;
    QVLLogLevel level;
};
constexpr std::array<LevelName, 4> kLevelNames = {
    {{"debug", QVLLogLevelDebug}, {"info", QVLLogLevelInfo}, {"warn", QVLLogLevelWarn}, {"error", QVLLogLevelError}}};

QVLLogLevel levelNamed(const std::optional<std::string>& name) {
    for (const LevelName& known : kLevelNames) {
        if (name == known.name) {
            return known.level;
        }
    }
    return QVLLogLevelDebug;
}

/// Scripts may set a log level. The call is understood and has no effect, which is how scripts know it.
void setLogLevel(const QVLJavaScriptContext::ArgumentReader& argument) {
    [[maybe_unused]] const QVLLogLevel level = levelNamed(argument(kLogLevelMember));
}

} // namespace

bool QVLScriptRunner::loadScriptAtPath(const std::string& path) {
    updateStatus([](Status& status) {
        status.loadedScriptPath.reset();
        status.lastLoadedFileHeaderVersion.reset();
    });
    QVLFileManager& fileManager = *m_platform->fileManager;
    const QVLFileManager::ItemKind kind = fileManager.itemKindAtPath(path);
    if (kind == QVLFileManager::ItemKind::Missing) {
        sendEventForLoadingStatus(kQVLEventLoadStatusNotFound, std::nullopt);
        return false;
    }
    if (kind == QVLFileManager::ItemKind::Directory) {
        QVL_LOG_ERROR(engine().get(), "Failed to load script file '%@' - directory found", path);
        sendEventForLoadingStatus(kQVLEventLoadStatusNotFound, std::nullopt);
        return false;
    }
    QVLResult<std::string> content = fileManager.contentsOfFileAtPath(path);
    if (content && !qvl::isValidUTF8(*content)) {
        content = QVLResult<std::string>::failure("The file is not UTF-8 text.");
    }
    if (!content) {
        QVL_LOG_ERROR(engine().get(), "Failed to load script file '%@' with error %@", path, content.error);
        sendEventForLoadingStatus(kQVLEventLoadStatusNotFound, std::nullopt);
        return false;
    }
    if (!loadScriptWithJSContent(*content)) {
        return false;
    }
    updateStatus([&](Status& status) { status.loadedScriptPath = path; });
    return true;
}

bool QVLScriptRunner::loadScriptWithJSContent(std::string_view content) {
    const std::optional<std::string> version = QVLScript::parseScriptVersionFromJSContent(content);
    updateStatus([&](Status& status) { status.lastLoadedFileHeaderVersion = version; });
    if (content.empty()) {
        QVL_LOG_ERROR(engine().get(), "Failed to load empty JavaScript.");
        return false;
    }
    installGlobalObject();
    if (m_jsContext && !m_jsContext->evaluateScript(content)) {
        return false;
    }
    if (!m_jsContext || !m_jsContext->hasMember(kGlobalObject, kProcessMember)) {
        const auto exception = m_jsContext ? m_jsContext->takeException() : std::nullopt;
        if (shouldInterrupt()) {
            return false;
        }
        QVL_LOG_ERROR(engine().get(), "Script evaluation has thrown JavaScript exception: %@",
                      exception ? std::optional(exception->text) : std::nullopt);
        logException(exception);
        sendEventForLoadingStatus(kQVLEventLoadStatusNotInstalled, std::nullopt);
        return false;
    }
    logException(m_jsContext->takeException());
    if (!isCurrentAppSupported()) {
        if (!shouldInterrupt()) {
            sendEventForLoadingStatus(kQVLEventLoadStatusNotSupported, std::nullopt);
        }
        return false;
    }
    return true;
}

void QVLScriptRunner::installGlobalObject() {
    // The old machine goes first, so that two never stand side by side.
    m_jsContext.reset();
    m_jsContext = m_platform->javaScriptEngine->makeContext([this] { return shouldInterrupt(); });
    m_hasMadeContext = true;
    if (m_jsContext) {
        m_jsContext->evaluateScript("quorvel = {};");
        m_jsContext->setFunction(kGlobalObject, kLogLevelMember, setLogLevel);
    }
}
