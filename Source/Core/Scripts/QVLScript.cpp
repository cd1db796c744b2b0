#include "QVLScript.h"

#include "QVLDateFormatter.h"
#include "QVLLogMacros.h"
#include "QVLRegularExpression.h"
#include "QVLUTF8.h"

#include <algorithm>
#include <vector>

namespace {

// The dot before "js" stands for any character, and so it has always been.
constexpr const char* kVersionPattern = "^// (?:Build: )?Quorvel[- ](.+?)(?:.js)?$";

const QVLNamedObject& scriptClass() {
    static const auto* const object = new QVLNamedObject("QVLScript");
    return *object;
}

std::optional<QVLURL> URLFromValue(const QVLJSONValue& value) {
    return value.isString() ? QVLURL::fromString(std::string(value.stringView())) : std::nullopt;
}

/// A version of another kind is taken as its description.
std::optional<std::string> versionFromValue(const QVLJSONValue& value) {
    return value.isNothing() || value.isNull() ? std::nullopt : std::optional(value.description());
}

} // namespace

struct QVLScript::Observers {
    std::vector<std::shared_ptr<StateObserver>> all;
};

std::shared_ptr<QVLScript> QVLScript::initWithVersion(std::optional<std::string> version,
                                                      std::optional<QVLDate> dateCreated, std::string title,
                                                      std::optional<QVLURL> url, QVLScriptSource source) {
    return std::shared_ptr<QVLScript>(
        new QVLScript(std::move(version), dateCreated, std::move(title), std::move(url), source));
}

QVLScript::QVLScript(std::optional<std::string> version, std::optional<QVLDate> dateCreated, std::string title,
                     std::optional<QVLURL> url, QVLScriptSource source)
    : m_title(std::move(title)),
      m_version(std::move(version)),
      m_dateCreated(dateCreated),
      m_url(std::move(url)),
      m_source(source),
      m_observers(std::make_shared<Observers>()) {}

std::shared_ptr<QVLScript> QVLScript::scriptWithJSONObject(const QVLJSONDictionary& JSONObject) {
    const std::optional<std::string> version = versionFromValue(JSONObject.valueForKey("version"));
    if (!version) {
        QVL_LOG_ERROR(&scriptClass(), "Script not created due to missing 'version' property in JSON: %@", JSONObject);
        return nullptr;
    }
    const auto date = QVLDateFormatter::sharedFormatter().dateFromString(JSONObject.valueForKey("date").stringView());
    if (!date) {
        QVL_LOG_ERROR(&scriptClass(), "Script '%@' not created due to missing or invalid 'date' property in JSON: %@",
                      version, JSONObject);
        return nullptr;
    }
    const std::optional<QVLURL> url = URLFromValue(JSONObject.valueForKey("url"));
    if (!url) {
        // The missing URL stands where the version would; hosts' log filters know the line like this.
        QVL_LOG_ERROR(&scriptClass(), "Script '%@' not created due to missing or invalid 'url' property in JSON: %@",
                      nullptr, JSONObject);
        return nullptr;
    }
    return initWithVersion(version, date, *version, url, QVLScriptSourceNightly);
}

std::shared_ptr<QVLScript> QVLScript::scriptWithPath(const std::string& path, const std::string& title,
                                                     const std::optional<QVLURL>& url, QVLScriptSource source) {
    const std::shared_ptr<QVLFileManager> fileManager = QVLPlatform::current()->fileManager;
    const QVLResult<std::string> content = fileManager->contentsOfFileAtPath(path);
    if (!content || !qvl::isValidUTF8(*content)) {
        QVL_LOG_INFO(&scriptClass(), "Did not find script at path '%@'", path);
        return initWithVersion(std::nullopt, std::nullopt, title, url, source);
    }
    const std::optional<std::string> version = parseScriptVersionFromJSContent(*content);
    if (!version) {
        QVL_LOG_ERROR(&scriptClass(), "Did not find version information in script at path '%@'", path);
    }
    const QVLResult<QVLDate> created = fileManager->creationDateOfItemAtPath(path);
    if (!created) {
        QVL_LOG_ERROR(&scriptClass(), "Could not get file attributes of script at path '%@', error: %@", path,
                      created.error);
    }
    std::shared_ptr<QVLScript> script = initWithVersion(version, created.value, title, url, source);
    script->m_state = QVLScriptStateAvailable;
    return script;
}

std::optional<std::string> QVLScript::parseScriptVersionFromJSContent(std::string_view content) {
    if (content.empty()) {
        return std::nullopt;
    }
    // Never destroyed: queues still running at exit may load scripts.
    static const auto& expression = *new auto(QVLRegularExpression::compile(kVersionPattern));
    if (!expression) {
        QVL_LOG_ERROR(&scriptClass(), "Could not create regular expression from: '%@'", kVersionPattern);
        return std::nullopt;
    }
    const std::vector<std::optional<std::string>> match = (*expression)->firstMatch(content);
    return match.size() == 2 ? match[1] : std::nullopt;
}

void QVLScript::setState(QVLScriptState state) {
    // An observer may drop the last reference to this record, or its own registration.
    const std::shared_ptr<QVLScript> self = shared_from_this();
    m_state = state;
    for (const auto& observer : std::vector(m_observers->all)) {
        const auto& registered = m_observers->all;
        if (std::find(registered.begin(), registered.end(), observer) != registered.end()) {
            (*observer)(*this);
        }
    }
}

QVLToken QVLScript::observeState(StateObserver observer) {
    auto registration = std::make_shared<StateObserver>(std::move(observer));
    m_observers->all.push_back(registration);
    return QVLToken([registration, observers = m_observers] { std::erase(observers->all, registration); });
}

bool QVLScript::isEqual(const QVLObject& other) const {
    if (this == &other) {
        return true;
    }
    const auto* script = dynamic_cast<const QVLScript*>(&other);
    return script && m_version && m_version == script->m_version && m_source == script->m_source;
}

std::size_t QVLScript::hash() const {
    const std::size_t hashOfVersion = m_version ? std::hash<std::string>()(*m_version) : 0;
    return hashOfVersion ^ static_cast<std::size_t>(m_source);
}
