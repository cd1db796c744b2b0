#include "LiveHost.h"

#include "CommandReader.h"
#include "HostError.h"
#include "Report.h"
#include "ValueText.h"

#include <system_error>

#include <unistd.h>

namespace host {

namespace {

constexpr QVLTimeInterval kLongestWait(3600.0);
constexpr QVLTimeInterval kInputsInterval(0.5);
constexpr QVLTimeInterval kFetchInterval(0.05);
/// A run on the queue posts its answer, which may cause another one.
constexpr int kRoundsToSettle = 3;

void post(std::function<void()> task) {
    QVLMainRunLoop::mainRunLoop()->post(std::move(task));
}

QVLURL addressFrom(const std::string& text) {
    const std::optional<QVLURL> url = QVLURL::fromString(text);
    if (!url) {
        throw HostError("'" + text + "' is not an address");
    }
    return *url;
}

std::filesystem::file_time_type timeOf(const std::string& path) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path, error);
    return error ? std::filesystem::file_time_type::min() : time;
}

} // namespace

LiveHost::LiveHost(Options options, std::shared_ptr<Console> console)
    : m_options(std::move(options)),
      m_console(std::move(console)),
      m_logger(std::make_shared<ConsoleLogger>(m_console, m_options.isVerbose)),
      m_isTerminal(isatty(STDIN_FILENO) != 0),
      m_interruption([this](int signal) { post([this, signal] { m_signal = signal; }); }) {
    const JSONFile inputs = readJSONFile(m_options.inputsPath, "inputs file");
    m_directory.emplace(m_options.directory);
    configureEnvironment();
    QVLQuorvelEnvironment::sharedEnvironment()->setAppVersion(
        inputs.object.valueForKey("appVersion").qvl_castToStringValue());
    makeEngine();
    listen();
}

LiveHost::~LiveHost() {
    m_observations.clear();
    m_life.reset();
    if (m_engine) {
        m_engine->stop();
    }
    QVLQuorvelEnvironment::sharedEnvironment()->setQuorvelForPreLogin(nullptr);
}

int LiveHost::run() {
    feedEngine();
    loadScript();
    m_observations.push_back(
        QVLMainRunLoop::mainRunLoop()->performRepeatedly(kInputsInterval, [this] { followInputs(); }));
    readLines([this, life = std::weak_ptr(m_life)](std::optional<std::string> line) {
        if (life.lock()) {
            receiveLine(std::move(line));
        }
    });
    settle(kRoundsToSettle);
    while (!m_isFinished && m_signal == 0) {
        QVLMainRunLoop::mainRunLoop()->runOnce(kLongestWait);
    }
    return m_signal != 0 ? kExitSignal + m_signal : kExitSuccess;
}

void LiveHost::configureEnvironment() {
    QVLQuorvelEnvironment& environment = *QVLQuorvelEnvironment::sharedEnvironment();
    environment.setLogger(m_logger);
    environment.setApplicationSupportDirectory(m_directory->path());
    setAddresses(environment);
    if (m_options.isUnlocked) {
        unlock();
    }
}

void LiveHost::setAddresses(QVLQuorvelEnvironment& environment) {
    std::optional<std::string> script = m_options.remoteScript;
    std::optional<std::string> feed = m_options.nightlyFeed;
    if (m_options.servedDirectory) {
        m_server.emplace(*m_options.servedDirectory, m_options.port);
        script = script.value_or(m_server->addressOf("/quorvel.js"));
        if (!feed && std::filesystem::exists(*m_options.servedDirectory + "/nightly.json")) {
            feed = m_server->addressOf("/nightly.json");
        }
        say("serving " + shortPath(*m_options.servedDirectory) + " at " + m_server->addressOf("/"));
    }
    if (script) {
        environment.setRemoteScriptURL(addressFrom(*script));
    }
    if (feed) {
        environment.setNightlyFeedURL(addressFrom(*feed));
    }
}

void LiveHost::unlock() const {
    const auto path = QVLQuorvelEnvironment::sharedEnvironment()->debugKeyFilePath();
    std::error_code error;
    const auto kind = std::filesystem::copy_options::overwrite_existing;
    if (!path || !std::filesystem::copy_file(TERMINAL_HOST_DEVELOPER_KEY, *path, kind, error)) {
        throw HostError("cannot copy the developer key file: " + error.message());
    }
}

void LiveHost::makeEngine() {
    const std::string directory = m_directory->path() + (m_options.hasAccount ? kAccountSubdirectory : "");
    const auto content = std::filesystem::path(directory) / kQVLContentDirectory;
    std::filesystem::create_directories(content);
    if (!m_options.journalsPath.empty()) {
        writeFile((content / kQVLJournalsFile).string(), readJSONFile(m_options.journalsPath, "journals file").text);
    }
    if (m_options.scriptPath) {
        checkIsReadable(*m_options.scriptPath, "script");
        m_engine = QVLQuorvel::initWithDirectory(directory, nullptr, nullptr);
    } else if (m_options.hasAccount) {
        const auto account = QVLAccount::init();
        account->setAccountDirectory(directory);
        m_engine = QVLQuorvelEnvironment::sharedEnvironment()->quorvelWithAccount(account);
    } else {
        m_engine = QVLQuorvelEnvironment::sharedEnvironment()->quorvelForPreLogin();
    }
}

void LiveHost::feedEngine() {
    m_inputsTime = timeOf(m_options.inputsPath);
    setInputs(readJSONFile(m_options.inputsPath, "inputs file"));
    for (const std::string& event : m_options.events) {
        m_engine->journals()->eventForKey(event)->trigger();
    }
    for (const Options::Flag& flag : m_options.flags) {
        m_engine->journals()->flagForKey(flag.key)->updateFlag(flag.value);
    }
}

void LiveHost::loadScript() {
    m_engine->start();
    if (m_options.scriptPath) {
        m_engine->performOnQueue([path = *m_options.scriptPath](QVLQuorvel& engine) {
            if (engine.loadScriptAtPath(path)) {
                engine.evaluateRules();
            }
        });
    }
}

void LiveHost::followInputs() {
    const auto time = timeOf(m_options.inputsPath);
    if (time == m_inputsTime) {
        return;
    }
    m_inputsTime = time;
    try {
        setInputs(readJSONFile(m_options.inputsPath, "inputs file"));
    } catch (const HostError& error) {
        say(std::string(error.what()) + "; the old inputs stay");
    }
}

void LiveHost::setInputs(const JSONFile& file) {
    m_engine->setInputs(file.object);
}

// --- Notifications --------------------------------------------------------------------------------------------------

void LiveHost::listen() {
    for (const char* const name : {kQVLQuorvelDidStartNotification, kQVLQuorvelScriptAvailabilityDidChangeNotification,
                                   kQVLInputsDidChangeNotification, kQVLOutputsDidChangeNotification,
                                   kQVLJournalsDidChangeNotification, kQVLGoogleAnalyticsEventsDidOccurNotification}) {
        m_observations.push_back(QVLNotificationCenter::defaultCenter().addObserver(
            name, m_engine, [this](const QVLNotification& notification) { receive(notification); }));
    }
    if (const auto& manager = m_engine->scriptManager()) {
        m_observations.push_back(QVLNotificationCenter::defaultCenter().addObserver(
            kQVLScriptManagerDidFetchScriptsNotification, manager,
            [this](const QVLNotification& notification) { receive(notification); }));
    }
}

void LiveHost::receive(const QVLNotification& notification) {
    Page page = m_console->makePage();
    page.put("  ").put(notification.name, Style::Label).endLine();
    const auto* const keys = notification.value<std::vector<std::string>>(kQVLChangedOutputKeys);
    std::vector<QVLJSONDictionary::Entry> changed;
    for (const std::string& key : keys ? *keys : std::vector<std::string>()) {
        const std::shared_ptr<QVLOutput> output = m_engine->outputForKey(key);
        changed.push_back({key, output ? output->genericValue() : QVLJSONValue("gone")});
    }
    constexpr std::size_t kIndent = 4;
    putMembers(page, QVLJSONDictionary(std::move(changed)), kIndent);
    m_console->print("Notifications", page);
    showEvents(notification);
}

void LiveHost::showEvents(const QVLNotification& notification) {
    using Events = std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>;
    std::vector<ReportedEvent> reported;
    if (const auto* const events = notification.value<Events>(kQVLGoogleAnalyticsEventsUserInfoKey)) {
        for (const auto& event : *events) {
            reported.push_back({event->category() == kQVLEventLoadCategory ? "status" : "session", event});
        }
        printEvents(*m_console, reported);
    }
}

// --- Lines of input -------------------------------------------------------------------------------------------------

// Typed commands are obeyed at once; piped ones each after all that the one before has caused.
void LiveHost::receiveLine(std::optional<std::string> line) {
    if (m_isTerminal && line) {
        obey(*line);
    } else if (m_isTerminal) {
        m_isFinished = true;
    } else {
        m_lines.push_back(std::move(line));
        runNextLine();
    }
}

void LiveHost::runNextLine() {
    if (m_isBusy || m_lines.empty() || m_isFinished) {
        return;
    }
    const std::optional<std::string> line = m_lines.front();
    m_lines.pop_front();
    if (!line) {
        m_isFinished = true;
        return;
    }
    m_isBusy = true;
    obey(*line);
    settle(kRoundsToSettle);
}

void LiveHost::settle(int rounds) {
    if (isFetching()) {
        m_waiting =
            QVLMainRunLoop::mainRunLoop()->performAfterDelay(kFetchInterval, [this] { settle(kRoundsToSettle); });
        return;
    }
    if (rounds == 0) {
        m_isBusy = false;
        runNextLine();
        return;
    }
    const std::weak_ptr<bool> life = m_life;
    m_engine->performOnQueue([this, life, rounds](QVLQuorvel&) {
        post([this, life, rounds] {
            if (life.lock()) {
                settle(rounds - 1);
            }
        });
    });
}

bool LiveHost::isFetching() const {
    if (!m_engine->scriptManager()) {
        return false;
    }
    bool isAnyOnItsWay = m_engine->scriptManager()->isFetching();
    for (const auto& script : scripts()) {
        isAnyOnItsWay = isAnyOnItsWay || script->state() == QVLScriptStateDownloading;
    }
    return isAnyOnItsWay;
}

void LiveHost::say(const std::string& text) const {
    Page page = m_console->makePage();
    page.put("  ").put(text).endLine();
    m_console->print("Host", page);
}

} // namespace host
