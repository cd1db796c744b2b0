#include "Host.h"

#include "HostError.h"

#include <array>
#include <string_view>
#include <utility>

namespace host {

namespace {

constexpr QVLTimeInterval kLongestWait(3600.0);
constexpr QVLTimeInterval kPatience(3.0);
constexpr QVLTimeInterval kLongestFarewell(0.2);

void post(std::function<void()> task) {
    QVLMainRunLoop::mainRunLoop()->post(std::move(task));
}

std::string countOf(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string textOfJournals(const QVLJournals& journals) {
    return countOf(journals.allEventKeys().size(), "event") + " and " + countOf(journals.allFlagKeys().size(), "flag");
}

/// Outputs are read one by one, as hosts read them: overrides count, and so does the switch that hides all outputs.
QVLJSONDictionary visibleOutputs(const QVLQuorvel& engine) {
    std::vector<QVLJSONDictionary::Entry> entries;
    for (const std::string& key : engine.outputKeys()) {
        if (const std::shared_ptr<QVLOutput> output = engine.outputForKey(key)) {
            entries.push_back({key, output->genericValue()});
        }
    }
    return QVLJSONDictionary(std::move(entries));
}

std::string textOfRecords(const Options& options) {
    std::string text;
    for (const std::string& event : options.events) {
        text += ", event " + event;
    }
    for (const Options::Flag& flag : options.flags) {
        text += ", flag " + flag.key + (flag.value ? "=yes" : "=no");
    }
    return text.empty() ? text : text.substr(2);
}

/// What a status event means for whoever wrote the script.
std::string_view meaningOfStatus(std::string_view status) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kMeanings = {{
        {kQVLEventLoadStatusNotFound, "it cannot be read"},
        {kQVLEventLoadStatusNotInstalled, "it throws, or leaves no quorvel.process"},
        {kQVLEventLoadStatusNotSupported, "it does not support this version of the application"},
        {kQVLEventLoadStatusBadResponse, "it throws, or does not answer with the text of a JSON object"},
        {kQVLEventLoadStatusRuntimeError, "it answers with an error"},
        {kQVLEventRunStatusSomeErrors, "some of its rules failed"},
    }};
    for (const auto& [known, meaning] : kMeanings) {
        if (known == status) {
            return meaning;
        }
    }
    return {};
}

} // namespace

Host::Host(Options options, std::shared_ptr<Console> console)
    : m_options(std::move(options)),
      m_console(std::move(console)),
      m_logger(std::make_shared<ConsoleLogger>(m_console, m_options.isVerbose)),
      m_interruption([this](int signal) { post([this, signal] { m_signal = signal; }); }) {
    readFiles();
    m_directory.emplace(m_options.directory);
    if (m_journals) {
        m_directory->setJournals(m_journals->text);
    }
    configureEnvironment();
    makeEngine();
    showSources();
}

Host::~Host() {
    m_observations.clear();
    if (m_engine) {
        m_engine->stop();
        letQueueFinish();
    }
}

int Host::run() {
    feedEngine();
    loadScript();
    stepUntilFinished();
    if (m_signal != 0) {
        return kExitSignal + m_signal;
    }
    showResult();
    if (const std::string reason = reasonOfFailure(); !reason.empty()) {
        throw HostError("the script '" + shortPath(m_scriptPath) + "' failed: " + reason, kExitScriptFailed);
    }
    return kExitSuccess;
}

void Host::readFiles() {
    const auto builtIn = QVLQuorvelEnvironment::sharedEnvironment()->bundleScriptFilePath();
    if (!m_options.scriptPath && !builtIn) {
        throw HostError("the library lacks its built-in script; --script names another one");
    }
    m_scriptPath = m_options.scriptPath ? *m_options.scriptPath : *builtIn;
    checkIsReadable(m_scriptPath, "script");
    m_inputs = readJSONFile(m_options.inputsPath, "inputs file");
    if (m_inputs.object.isEmpty()) {
        throw HostError("the inputs file '" + m_options.inputsPath +
                        "' holds no inputs, and without any no script runs");
    }
    if (!m_options.journalsPath.empty()) {
        m_journals = readJSONFile(m_options.journalsPath, "journals file");
    }
}

void Host::configureEnvironment() {
    QVLQuorvelEnvironment& environment = *QVLQuorvelEnvironment::sharedEnvironment();
    environment.setLogger(m_logger);
    environment.setApplicationSupportDirectory(m_directory->path());
    environment.setAppVersion(m_inputs.object.valueForKey("appVersion").qvl_castToStringValue());
}

void Host::makeEngine() {
    m_engine = QVLQuorvel::initWithDirectory(m_directory->path(), nullptr, nullptr);
    listen();
}

void Host::listen() {
    m_observations.push_back(QVLNotificationCenter::defaultCenter().addObserver(
        kQVLGoogleAnalyticsEventsDidOccurNotification, m_engine,
        [this](const QVLNotification& notification) { receiveEvents(notification); }));
}

void Host::showSources() const {
    std::vector<Source> sources;
    sources.push_back({"script", shortPath(m_scriptPath)});
    sources.push_back({"inputs", shortPath(m_options.inputsPath) + ", " + countOf(m_inputs.object.count(), "value")});
    const std::string journals = m_journals ? shortPath(m_options.journalsPath) : "kept from the last run";
    sources.push_back({"journals", journals + ", " + textOfJournals(*m_engine->journals())});
    if (const std::string records = textOfRecords(m_options); !records.empty()) {
        sources.push_back({"recorded", records});
    }
    sources.push_back({"directory", m_directory->isTemporary() ? "temporary" : shortPath(m_directory->path())});
    printSources(*m_console, sources);
}

void Host::feedEngine() {
    m_engine->setInputs(m_inputs.object);
    for (const std::string& event : m_options.events) {
        m_engine->journals()->eventForKey(event)->trigger();
    }
    for (const Options::Flag& flag : m_options.flags) {
        m_engine->journals()->flagForKey(flag.key)->updateFlag(flag.value);
    }
}

// An engine that is not started evaluates nothing, so the script is in place before the first evaluation.
void Host::loadScript() {
    m_engine->performOnQueue([this, path = m_scriptPath](QVLQuorvel& engine) {
        const bool isLoaded = engine.loadScriptAtPath(path);
        post([this, isLoaded] { scriptDidLoad(isLoaded); });
    });
}

void Host::scriptDidLoad(bool isLoaded) {
    if (!isLoaded || m_signal != 0) {
        m_isFinished = true;
        return;
    }
    m_engine->start();
    m_engine->performOnQueue([this](QVLQuorvel& engine) {
        engine.evaluateRules();
        const bool hasAnswer = engine.lastRunDate().has_value();
        // What the run itself has posted by now, such as the answer, arrives before this.
        post([this, hasAnswer] { rulesDidRun(hasAnswer); });
    });
}

void Host::rulesDidRun(bool hasAnswer) {
    m_hasAnswer = hasAnswer;
    m_isFinished = true;
}

void Host::stepUntilFinished() {
    const std::shared_ptr<QVLMainRunLoop> mainRunLoop = QVLMainRunLoop::mainRunLoop();
    const QVLToken patience = mainRunLoop->performAfterDelay(
        kPatience, [this] { printRemark(*m_console, "The script is still running; Ctrl-C ends it."); });
    while (!m_isFinished && m_signal == 0) {
        mainRunLoop->runOnce(kLongestWait);
    }
}

// A file that is being written just now gets finished, so that its directory can go. A script that does not return is
// left to itself.
void Host::letQueueFinish() {
    const std::shared_ptr<QVLMainRunLoop> mainRunLoop = QVLMainRunLoop::mainRunLoop();
    const auto isOver = std::make_shared<bool>(false);
    m_engine->performOnQueue([isOver](QVLQuorvel&) { post([isOver] { *isOver = true; }); });
    const QVLToken limit = mainRunLoop->performAfterDelay(kLongestFarewell, [isOver] { *isOver = true; });
    while (!*isOver) {
        mainRunLoop->runOnce(kLongestFarewell);
    }
}

void Host::receiveEvents(const QVLNotification& notification) {
    using Events = std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>;
    const auto* const events = notification.value<Events>(kQVLGoogleAnalyticsEventsUserInfoKey);
    for (const auto& event : events ? *events : Events()) {
        m_events.push_back({event->category() == kQVLEventLoadCategory ? "status" : "session", event});
    }
}

void Host::showResult() const {
    if (const std::size_t hidden = m_logger->hiddenLineCount(); hidden > 0) {
        printRemark(*m_console, countOf(hidden, "debug line") + " left out; see --verbose.");
    }
    std::vector<ReportedEvent> events = m_events;
    for (const auto& event : m_engine->analyticsEventsWithExtraDimensions()) {
        events.push_back({"dimensions", event});
    }
    printEvents(*m_console, events);
    if (m_hasAnswer) {
        printBookkeeping(*m_console, m_engine->outputs());
        printOutputs(*m_console, visibleOutputs(*m_engine));
    }
}

std::string Host::reasonOfFailure() const {
    for (const ReportedEvent& reported : m_events) {
        // The first status tells most: that a script is not supported may follow from a bad answer.
        if (reported.kind == "status") {
            return std::string(meaningOfStatus(reported.event->action().value_or("")));
        }
    }
    return m_hasAnswer ? "" : "the log says why";
}

} // namespace host
