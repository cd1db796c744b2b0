#include "Host.h"

#include "HostError.h"
#include "HostFiles.h"
#include "Report.h"
#include "Scripts.h"

#include <utility>

namespace host {

namespace {

using namespace std::chrono_literals;

constexpr QVLTimeInterval kTickInterval(0.5);
constexpr QVLTimeInterval kLongestWait(3600.0);
/// A script that takes longer gets a remark, and later, where nobody is there to decide, the end.
constexpr auto kPatience = 3s;
constexpr auto kLongestRun = 10s;
/// Until the network is known to be there, which takes a look-up of the host's name.
constexpr auto kLongestWaitForNetwork = 3s;
/// A stopped engine ends a run that goes on for another second.
constexpr QVLTimeInterval kLongestFarewell(2.0);

void post(std::function<void()> task) {
    QVLMainRunLoop::mainRunLoop()->post(std::move(task));
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

bool hasUnaskedTest(const QVLABTestManager& manager) {
    for (const auto& [guid, result] : manager.testResults()) {
        if (result->status() == QVLABTestStatusUnknown && result->lastCheckTime() == 0) {
            return true;
        }
    }
    return false;
}

} // namespace

Host::Host(Options options, std::shared_ptr<Console> console)
    : m_options(std::move(options)),
      m_console(std::move(console)),
      m_logger(std::make_shared<ConsoleLogger>(m_console, m_options.isVerbose)),
      m_inputs(m_options.inputsPath),
      m_interruption([this](int signal) { post([this, signal] { m_signal = signal; }); }),
      m_environment(m_options, m_inputs.inputs(), m_logger),
      m_engine(m_environment.makeEngine()),
      m_printer(m_console, m_engine),
      m_commands(m_console, m_engine, m_printer, [this] { finish(); }),
      m_steps(m_engine, [this] { return isWaiting(); }),
      m_feed(m_console, m_commands, m_steps, [this] { finish(); }) {}

Host::~Host() {
    m_life.reset();
    m_steps.end();
    m_printer.end();
    m_engine->stop();
    letQueueFinish();
}

int Host::run() {
    showSources();
    prepareSteps();
    runUntilFinished();
    return result();
}

void Host::showSources() const {
    std::vector<Source> sources = m_environment.scriptSources();
    sources.push_back({"inputs", shortPath(m_inputs.path()) + ", " + countOf(m_inputs.inputs().count(), "value")});
    const std::string journals =
        m_options.journalsPath.empty() ? "kept from the last run" : shortPath(m_options.journalsPath);
    sources.push_back({"journals", journals + ", " + textOfJournals(*m_engine->journals())});
    if (const std::string records = textOfRecords(m_options); !records.empty()) {
        sources.push_back({"recorded", records});
    }
    for (const Source& source : m_environment.directorySources()) {
        sources.push_back(source);
    }
    printSources(*m_console, "Run", sources);
}

// What is recorded first causes no evaluation of its own, since the engine is not started yet. A script file is loaded
// before the start too; it is tried out on the inputs, so these have to be there.
void Host::prepareSteps() {
    m_steps.add([this] { record(); });
    if (m_options.scriptPath) {
        m_steps.add([this] { loadScript(); });
    }
    m_steps.add([this] { start(); });
    m_steps.add([this] { remarkOnTests(); });
    if (m_options.isTour) {
        m_feed.addTour();
    }
    if (m_options.isInteractive) {
        m_feed.followStandardInput();
    } else {
        m_steps.add([this] { finish(); });
    }
}

void Host::record() {
    for (const std::string& event : m_options.events) {
        m_engine->journals()->eventForKey(event)->trigger();
    }
    for (const Options::Flag& flag : m_options.flags) {
        m_engine->journals()->flagForKey(flag.key)->updateFlag(flag.value);
    }
}

void Host::loadScript() {
    setInputs();
    m_engine->performOnQueue([this, life = std::weak_ptr(m_life), path = *m_options.scriptPath](QVLQuorvel& engine) {
        const bool isLoaded = engine.loadScriptAtPath(path);
        post([this, life, isLoaded] {
            if (life.lock() && !isLoaded) {
                m_hasLoadFailed = true;
                finish();
            }
        });
    });
}

// The engine of the time before login evaluates when inputs are set after the start; an account's engine needs them
// when its first script arrives, which is not before this returns.
void Host::start() {
    m_startTime = std::chrono::steady_clock::now();
    m_engine->start();
    setInputs();
}

void Host::setInputs() {
    m_environment.describeApplication(m_inputs.inputs());
    m_engine->setInputs(m_inputs.inputs());
}

void Host::remarkOnTests() const {
    const auto& tests = m_engine->abtestManager();
    const bool isUnreachable = tests && tests->reachability() && !tests->reachability()->isReachable();
    if (isUnreachable && hasUnaskedTest(*tests)) {
        printRemark(*m_console, "Host",
                    "'" + m_options.testHost.value_or("") + "' cannot be reached; its A/B tests wait");
    }
}

// --- Life -----------------------------------------------------------------------------------------------------------

void Host::runUntilFinished() {
    const std::shared_ptr<QVLMainRunLoop> mainRunLoop = QVLMainRunLoop::mainRunLoop();
    const QVLToken ticking = mainRunLoop->performRepeatedly(kTickInterval, [this] { tick(); });
    while (!m_isFinished && m_signal == 0) {
        mainRunLoop->runOnce(kLongestWait);
    }
}

void Host::tick() {
    if (m_options.isInteractive) {
        followInputs();
    }
    watchScript();
    if (m_console->isBroken()) {
        finish();
    }
}

void Host::followInputs() {
    try {
        if (m_inputs.readIfChanged()) {
            setInputs();
        }
    } catch (const HostError& error) {
        printRemark(*m_console, "Host", std::string(error.what()) + "; the old inputs stay");
    }
}

void Host::watchScript() {
    const auto time = m_steps.timeOnQueue();
    if (time > kPatience && !m_hasRemarkedOnScript) {
        printRemark(*m_console, "Log", "The script is still running; Ctrl-C ends it.");
    }
    m_hasRemarkedOnScript = time > kPatience;
    if (time > kLongestRun && m_options.isInteractive && !m_feed.isTerminal()) {
        m_isStuck = true;
        finish();
    }
}

bool Host::isWaiting() const {
    const auto& scripts = m_engine->scriptManager();
    const auto& tests = m_engine->abtestManager();
    if (scripts && isDownloading(*scripts)) {
        return true;
    }
    const bool hasUnfetched =
        scripts && scripts->remoteScript() && scripts->remoteScript()->state() == QVLScriptStateUnknown;
    const bool hasUnasked = tests && hasUnaskedTest(*tests);
    return (hasUnfetched || hasUnasked) && std::chrono::steady_clock::now() - m_startTime < kLongestWaitForNetwork;
}

void Host::finish() {
    m_isFinished = true;
    m_steps.end();
}

// A file that is being written just now gets finished, so that its directory can go.
void Host::letQueueFinish() {
    const std::shared_ptr<QVLMainRunLoop> mainRunLoop = QVLMainRunLoop::mainRunLoop();
    const auto isOver = std::make_shared<bool>(false);
    m_engine->performOnQueue([isOver](QVLQuorvel&) { post([isOver] { *isOver = true; }); });
    const QVLToken limit = mainRunLoop->performAfterDelay(kLongestFarewell, [isOver] { *isOver = true; });
    while (!*isOver) {
        mainRunLoop->runOnce(kLongestFarewell);
    }
}

int Host::result() const {
    if (m_signal != 0) {
        return kExitSignal + m_signal;
    }
    if (m_isStuck) {
        throw HostError("the script '" + nameOfScript() + "' did not return within " +
                            countOf(kLongestRun.count(), "second"),
                        kExitScriptFailed);
    }
    if (m_options.isInteractive && !m_hasLoadFailed) {
        return kExitSuccess;
    }
    if (const std::size_t hidden = m_logger->hiddenLineCount(); hidden > 0) {
        printRemark(*m_console, "Log", countOf(hidden, "debug line") + " left out; see --verbose.");
    }
    printReport(*m_console, *m_engine, m_printer.events());
    if (const std::string reason = reasonOfFailure(*m_engine, m_printer.events()); !reason.empty()) {
        throw HostError("the script '" + nameOfScript() + "' failed: " + reason, kExitScriptFailed);
    }
    return kExitSuccess;
}

// A script that has not come through its load yet counts too.
std::string Host::nameOfScript() const {
    const auto& manager = m_engine->scriptManager();
    const auto script = manager ? manager->currentScript() : nullptr;
    const auto path = script ? manager->localPathForScript(*script) : m_options.scriptPath;
    return shortPath(path.value_or("none"));
}

} // namespace host
