#include "MemoryPlatform.h"

#include "FixedLocalization.h"

#include <utility>

namespace {

class MemoryQueue final : public QVLSerialQueue {
public:
    MemoryQueue(std::shared_ptr<MemoryRunLoop> runLoop, std::string label)
        : m_runLoop(std::move(runLoop)), m_label(std::move(label)) {}

    void async(std::function<void()> task) override { m_runLoop->async(std::move(task)); }
    [[nodiscard]] const std::string& label() const override { return m_label; }

private:
    const std::shared_ptr<MemoryRunLoop> m_runLoop;
    const std::string m_label;
};

class NoBundle final : public QVLBundle {
public:
    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view) const override { return std::nullopt; }
    [[nodiscard]] bool hasDirectory(std::string_view) const override { return false; }
};

/// Answers each request with the text that the platform has then.
class AnsweringSession final : public QVLHTTPSession {
public:
    AnsweringSession(std::shared_ptr<MemoryRunLoop> runLoop, const std::string& reply)
        : m_runLoop(std::move(runLoop)), m_reply(reply) {}

    [[nodiscard]] QVLToken start(QVLHTTPRequest request, Completion completion) override {
        const auto pending = std::make_shared<Completion>(std::move(completion));
        QVLHTTPResponse response{.statusCode = 200, .body = m_reply, .url = request.url.text()};
        m_runLoop->post([pending, reply = QVLHTTPReply{.response = std::move(response)}] {
            if (const Completion completion = std::exchange(*pending, nullptr)) {
                completion(reply);
            }
        });
        return QVLToken([weak = std::weak_ptr(pending)] {
            if (const auto pending = weak.lock()) {
                const Completion dropped = std::exchange(*pending, nullptr);
            }
        });
    }
    void invalidateAndCancel() override {}

private:
    const std::shared_ptr<MemoryRunLoop> m_runLoop;
    const std::string& m_reply;
};

/// A script whose `process` answers the text that the platform has then, whatever the script's own text.
class AnsweringContext final : public QVLJavaScriptContext {
public:
    explicit AnsweringContext(const std::string& answer) : m_answer(answer) {}

    bool evaluateScript(std::string_view) override { return true; }
    void setFunction(std::string_view, std::string_view, std::function<void(const ArgumentReader&)>) override {}
    [[nodiscard]] bool hasMember(std::string_view, std::string_view) override { return true; }
    [[nodiscard]] QVLJavaScriptAnswer
    callMember(std::string_view, std::string_view,
               const std::vector<std::shared_ptr<const QVLJavaScriptText>>&) override {
        return {.text = m_answer, .className = "string"};
    }
    [[nodiscard]] std::optional<QVLJavaScriptException> takeException() override { return std::nullopt; }

private:
    const std::string& m_answer;
};

class AnsweringEngine final : public QVLJavaScriptEngine {
public:
    explicit AnsweringEngine(const std::string& answer) : m_answer(answer) {}

    [[nodiscard]] std::unique_ptr<QVLJavaScriptContext>
    makeContext(QVLJavaScriptContext::InterruptionTest /*shouldInterrupt*/) override {
        return std::make_unique<AnsweringContext>(m_answer);
    }
    [[nodiscard]] std::shared_ptr<const QVLJavaScriptText> makeText(std::string_view /*text*/) override {
        return std::make_shared<QVLJavaScriptText>();
    }

private:
    const std::string& m_answer;
};

void runNext(std::deque<std::function<void()>>& tasks) {
    const std::function<void()> task = std::move(tasks.front());
    tasks.pop_front();
    task();
}

} // namespace

/// The platform of a fuzzer that makes none; it has nothing to offer.
QVLPlatform QVLPlatform::native() {
    return {};
}

QVLFileManager::ItemKind MemoryFiles::itemKindAtPath(const std::string& path) const {
    if (files.contains(path)) {
        return ItemKind::File;
    }
    const auto inside = files.lower_bound(path + "/");
    return inside != files.end() && inside->first.starts_with(path + "/") ? ItemKind::Directory : ItemKind::Missing;
}

QVLResult<std::string> MemoryFiles::contentsOfFileAtPath(const std::string& path) const {
    const auto found = files.find(path);
    return found != files.end() ? QVLResult<std::string>::success(found->second)
                                : QVLResult<std::string>::failure("There is no such file.");
}

QVLOutcome MemoryFiles::writeAtomically(std::string_view data, const std::string& path, QVLDurability /*durability*/) {
    files[path] = data;
    return QVLOutcome::success();
}

QVLOutcome MemoryFiles::removeItemAtPath(const std::string& path) {
    return files.erase(path) != 0 ? QVLOutcome::success() : QVLOutcome::failure("There is no such file.");
}

QVLOutcome MemoryFiles::createDirectoryAtPath(const std::string& /*path*/, bool /*withIntermediateDirectories*/) {
    return QVLOutcome::success();
}

QVLResult<QVLDate> MemoryFiles::creationDateOfItemAtPath(const std::string& /*path*/) const {
    return QVLResult<QVLDate>::success(QVLDate());
}

QVLResult<std::vector<std::string>> MemoryFiles::contentsOfDirectoryAtPath(const std::string& path) const {
    std::vector<std::string> names;
    for (const auto& [file, content] : files) {
        if (file.starts_with(path + "/") && file.find('/', path.size() + 1) == std::string::npos) {
            names.push_back(file.substr(path.size() + 1));
        }
    }
    return QVLResult<std::vector<std::string>>::success(std::move(names));
}

bool MemoryRunLoop::runOnce(QVLTimeInterval /*longestWait*/) {
    const bool hasWork = !m_posted.empty() || !m_queued.empty();
    runUntilIdle();
    return hasWork;
}

void MemoryRunLoop::runUntilIdle() {
    while (!m_posted.empty() || !m_queued.empty()) {
        while (!m_posted.empty()) {
            runNext(m_posted);
        }
        m_isOnQueue = true;
        while (!m_queued.empty()) {
            runNext(m_queued);
        }
        m_isOnQueue = false;
    }
}

MemoryPlatform::MemoryPlatform() {
    QVLPlatform platform;
    platform.mainRunLoop = runLoop;
    platform.clock = runLoop;
    platform.userDefaults = userDefaults;
    platform.fileManager = fileManager;
    platform.javaScriptEngine = std::make_shared<AnsweringEngine>(answer);
    platform.bundle = std::make_shared<NoBundle>();
    platform.localization = std::make_shared<FixedLocalization>();
    platform.makeSerialQueue = [runLoop = runLoop](std::string label) {
        return std::make_unique<MemoryQueue>(runLoop, std::move(label));
    };
    platform.makeHTTPSession = [this] { return std::make_shared<AnsweringSession>(runLoop, reply); };
    platform.makeReachabilityTarget = [](const QVLReachabilityPeer&) { return nullptr; };
    QVLPlatform::install(std::make_shared<const QVLPlatform>(std::move(platform)));
}

MemoryPlatform::~MemoryPlatform() {
    runLoop->runUntilIdle();
    QVLPlatform::install(nullptr);
}
