#include "QVLHTTPSession.h"
#include "QVLJSONSerialization.h"
#include "QVLLogMacros.h"
#include "QVLScriptManager.h"

#include <algorithm>

// What is downloaded, and where it is kept.

namespace {

constexpr int kStatusOK = 200;

bool isSuccess(const QVLHTTPReply& reply) {
    return reply.response && reply.response->statusCode == kStatusOK && reply.response->hasBody();
}

std::optional<std::string> responseDescription(const QVLHTTPReply& reply) {
    return reply.response ? std::optional(reply.response->description()) : std::nullopt;
}

std::optional<std::string> errorDescription(const QVLHTTPReply& reply) {
    return reply.error ? std::optional(reply.error->description()) : std::nullopt;
}

/// The feed as an array; anything else at the top level counts as a feed that does not parse.
QVLJSONReadResult readFeed(const std::string& data) {
    QVLJSONReadResult feed = QVLJSONSerialization::JSONObjectWithData(data);
    if (feed && !feed.value.isArray()) {
        return {{}, "The top level is not an array."};
    }
    return feed;
}

} // namespace

const std::shared_ptr<QVLHTTPSession>& QVLScriptManager::urlSession() {
    if (!m_urlSession) {
        m_urlSession = m_platform->makeHTTPSession();
    }
    return m_urlSession;
}

void QVLScriptManager::request(const std::optional<QVLURL>& url, std::function<void(const QVLHTTPReply&)> completion) {
    const std::uint64_t number = ++m_lastRequest;
    auto finish = [weak = weak_from_this(), number, completion = std::move(completion)](const QVLHTTPReply& reply) {
        if (const auto self = weak.lock()) {
            completion(reply);
            self->m_requests.erase(number);
        }
    };
    if (!url) {
        m_platform->mainRunLoop->post([finish = std::move(finish)] { finish(QVLHTTPReply{}); });
        return;
    }
    m_requests[number] = urlSession()->start(QVLHTTPRequest{.url = *url}, std::move(finish));
}

void QVLScriptManager::downloadScript(const std::shared_ptr<QVLScript>& script, std::function<void()> completion) {
    const std::shared_ptr<QVLScriptManager> self = shared_from_this();
    if (script->state() == QVLScriptStateDownloading) {
        QVL_LOG_INFO(this, "Already downloading script:%@", script);
        return;
    }
    script->setState(QVLScriptStateDownloading);
    request(script->url(), [this, script, completion = std::move(completion)](const QVLHTTPReply& reply) {
        finishDownload(script, reply, completion);
    });
}

void QVLScriptManager::finishDownload(const std::shared_ptr<QVLScript>& script, const QVLHTTPReply& reply,
                                      const std::function<void()>& completion) {
    const bool isSaved = saveDownload(*script, reply);
    script->setState(isSaved ? QVLScriptStateAvailable : QVLScriptStateFailed);
    if (isSaved && completion) {
        completion();
    }
}

bool QVLScriptManager::saveDownload(const QVLScript& script, const QVLHTTPReply& reply) const {
    if (!isSuccess(reply)) {
        QVL_LOG_ERROR(this, "Failed to fetch script '%@', response: %@ error:%@", script.version(),
                      responseDescription(reply), errorDescription(reply));
        return false;
    }
    const std::optional<std::string> path = localPathForScript(script);
    if (!path || path->empty()) {
        QVL_LOG_ERROR(this, "Failed to get save path. %@", script.version());
        return false;
    }
    if (const QVLOutcome written = m_platform->fileManager->writeAtomically(reply.response->body, *path); !written) {
        QVL_LOG_ERROR(this, "Failed to write data for script '%@' to disk: %@", script.version(), written.error);
        return false;
    }
    return true;
}

void QVLScriptManager::fetchNightlyScripts(std::function<void(std::optional<Scripts>)> completion) {
    request(m_environment->nightlyFeedURL(), [this, completion = std::move(completion)](const QVLHTTPReply& reply) {
        completion(scriptsOfFeedReply(reply));
    });
}

std::optional<QVLScriptManager::Scripts> QVLScriptManager::scriptsOfFeedReply(const QVLHTTPReply& reply) const {
    const std::string cachePath = cachedNightlyFeedPath().value_or("");
    QVLResult<std::string> data;
    if (isSuccess(reply)) {
        data = QVLResult<std::string>::success(reply.response->body);
    } else {
        QVL_LOG_ERROR(this, "Could not fetch nightly feed due to error: %@", errorDescription(reply));
        QVL_LOG_INFO(this, "Falling back to last cached feed");
        data = m_platform->fileManager->contentsOfFileAtPath(cachePath);
    }
    if (!data) {
        QVL_LOG_ERROR(this, "Could not load cached feed due to error: %@", data.error);
        return std::nullopt;
    }
    const QVLJSONReadResult feed = readFeed(*data);
    if (!feed) {
        QVL_LOG_ERROR(this, "Could not parse nightly feed: %@", feed.error);
        return std::nullopt;
    }
    if (const QVLOutcome written = m_platform->fileManager->writeAtomically(*data, cachePath); !written) {
        QVL_LOG_ERROR(this, "Failed to cache nightly feed: %@", written.error);
    }
    return scriptsOfFeed(feed.value.arrayOrEmpty());
}

QVLScriptManager::Scripts QVLScriptManager::scriptsOfFeed(const QVLJSONArray& feed) {
    Scripts scripts;
    for (const QVLJSONValue& element : feed) {
        if (auto script = QVLScript::scriptWithJSONObject(element.dictionaryOrEmpty())) {
            scripts.push_back(std::move(script));
        }
    }
    return scripts;
}

void QVLScriptManager::processNightlyScripts(const std::optional<Scripts>& scripts) {
    // Whoever is told of a state on the way may drop this manager.
    const std::shared_ptr<QVLScriptManager> self = shared_from_this();
    std::vector<std::string> unlisted = cachedScriptPaths().value_or(std::vector<std::string>());
    for (const std::shared_ptr<QVLScript>& script : scripts.value_or(Scripts())) {
        const std::optional<std::string> path = localPathForScript(*script);
        std::erase(unlisted, path.value_or(""));
        if (path && m_platform->fileManager->itemExistsAtPath(*path)) {
            script->setState(QVLScriptStateAvailable);
        } else {
            downloadScript(script, nullptr);
        }
    }
    // Without a feed every nightly script goes: an unreadable feed wipes the directory on purpose.
    deleteScriptsWithPaths(unlisted);
    setNightlyScripts(scripts);
}

std::optional<std::string> QVLScriptManager::cachedNightlyFeedPath() const {
    const std::optional<std::string> directory = m_environment->nightlyScriptDirectoryPath();
    return directory ? std::optional(*directory + "/" + kQVLCachedNightlyFeedFile) : std::nullopt;
}

std::optional<std::vector<std::string>> QVLScriptManager::cachedScriptPaths() const {
    const std::string directory = m_environment->nightlyScriptDirectoryPath().value_or("");
    const QVLResult<std::vector<std::string>> names = m_platform->fileManager->contentsOfDirectoryAtPath(directory);
    if (!names) {
        QVL_LOG_ERROR(this, "Could not get contents of nightly script path: %@", names.error);
        return std::nullopt;
    }
    const std::string prefix = directory + "/";
    std::vector<std::string> paths;
    for (const std::string& name : *names) {
        paths.push_back(prefix + name);
    }
    std::erase(paths, cachedNightlyFeedPath().value_or(""));
    return paths;
}

void QVLScriptManager::deleteScriptsWithPaths(const std::vector<std::string>& paths) const {
    for (const std::string& path : paths) {
        if (const QVLOutcome removed = m_platform->fileManager->removeItemAtPath(path); !removed) {
            QVL_LOG_ERROR(this, "Failed to delete script:%@", removed.error);
        }
    }
}

void QVLScriptManager::setupNightlyScripts() {
    const std::optional<std::string> path = cachedNightlyFeedPath();
    if (!shouldIncludeNightlyScripts() || !path || !m_platform->fileManager->itemExistsAtPath(*path)) {
        return;
    }
    const QVLResult<std::string> data = m_platform->fileManager->contentsOfFileAtPath(*path);
    if (!data) {
        QVL_LOG_ERROR(this, "Could not load cached nightly script feed: %@", data.error);
        return;
    }
    const QVLJSONReadResult feed = readFeed(*data);
    if (!feed) {
        QVL_LOG_ERROR(this, "Could not parse nightly feed: %@", feed.error);
        return;
    }
    setNightlyScripts(scriptsOfFeed(feed.value.arrayOrEmpty()));
}
