#include "EnvironmentForTests.h"
#include "FixedBundle.h"
#include "LoopbackServer.h"
#include "QVLJSONSerialization.h"
#include "QVLMainRunLoop.h"
#include "QVLNotificationCenter.h"
#include "QVLPlatform.h"
#include "QVLQuorvel.h"
#include "QVLScriptManager.h"
#include "RecordingLogger.h"
#include "ResidentMemory.h"
#include "ScriptedReachability.h"
#include "TemporaryDirectory.h"
#include "Victim.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <random>
#include <set>

// One host that does everything that a host can do, in random order, with what must hold checked all the while.

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr const char* kVictimEvent = "round";

long fromVariable(const char* name, long otherwise) {
    const char* const text = std::getenv(name);
    return text ? std::atol(text) : otherwise;
}

std::string scriptOfVersion(int version) {
    const std::string text = std::to_string(version);
    return "// Quorvel " + text +
           ".js\nquorvel.process = (inputsText, journalsText) => {\n"
           "    const inputs = JSON.parse(inputsText), journals = JSON.parse(journalsText);\n"
           "    if (inputs.a === 'throw') { throw new Error('asked for'); }\n"
           "    if (inputs.a === 'fail') { return JSON.stringify({ '%error': 'asked for' }); }\n"
           "    const sum = Object.values(journals.events).reduce((sum, event) => sum + (event.count || 0), 0);\n"
           "    return JSON.stringify({ '%version': '" +
           text + "', '%isCurrentAppSupported': true, '%usedInputs': Object.keys(inputs), ...inputs, sum,\n" +
           "        flags: Object.keys(journals.flags).filter(key => journals.flags[key].flag),\n"
           "        '%googleAnalyticsSessionEvents': [{ category: 'soak', action: `${sum % 3}` }] });\n};\n";
}

std::vector<std::string> differingKeys(const QVLJSONDictionary& a, const QVLJSONDictionary& b) {
    std::set<std::string> keys;
    for (const QVLJSONDictionary* const one : {&a, &b}) {
        for (const std::string& key : one->allKeys()) {
            const QVLJSONValue value = a.valueForKey(key);
            if (value.isNothing() || !(value == b.valueForKey(key))) {
                keys.insert(key);
            }
        }
    }
    return {keys.begin(), keys.end()};
}

std::string textOf(const QVLJSONValue& value) {
    return QVLJSONSerialization::dataWithJSONObject(value).text;
}

QVLJSONDictionary documentAt(const std::string& path) {
    return QVLJSONStore::sharedStore()->loadJSONFromFileAtPath(path).dictionaryOrEmpty();
}

std::ptrdiff_t countIn(const char* directory) {
    return std::distance(fs::directory_iterator(directory), {});
}

/// What the journals must say.
struct JournalsModel {
    std::map<std::string, std::uint64_t> events;
    std::map<std::string, bool> flags;
    int notifications = 0;

    void expectIn(const QVLJSONValue& form) const {
        std::map<std::string, std::uint64_t> savedEvents;
        std::map<std::string, bool> savedFlags;
        const QVLJSONDictionary members = form.dictionaryOrEmpty();
        for (const auto& [key, value] : members.valueForKey(kQVLJournalsJSONKeyEvents).dictionaryOrEmpty()) {
            savedEvents[key.text()] = value.dictionaryOrEmpty().valueForKey("count").unsignedValue();
        }
        for (const auto& [key, value] : members.valueForKey(kQVLJournalsJSONKeyFlags).dictionaryOrEmpty()) {
            savedFlags[key.text()] = value.dictionaryOrEmpty().valueForKey("flag").qvl_castToBoolValue();
        }
        EXPECT_EQ(savedEvents, events);
        EXPECT_EQ(savedFlags, flags);
    }
};

class Soak : public ::testing::Test {
protected:
    Soak() {
        const auto bundle = std::make_shared<FixedBundle>();
        // The built-in script would always stand before the remote one.
        bundle->setPathForResource(kQVLBundledScriptFile, std::nullopt);
        QVLPlatform platform = QVLPlatform::native();
        platform.bundle = bundle;
        platform.makeReachabilityTarget = m_reachability.maker();
        m_runLoop = platform.mainRunLoop;
        QVLPlatform::install(std::make_shared<const QVLPlatform>(std::move(platform)));
        m_reachability.initialFlags = kQVLReachabilityFlagsReachable;
        m_environment->setRemoteScriptURL(m_server.url("/quorvel.js"));
        m_account->setAccountDirectory(m_directory.path("account"));
    }
    ~Soak() override {
        dropEngine();
        QVLPlatform::install(nullptr);
    }

    // --- The host ---------------------------------------------------------------------------------------------------

    void makeEngine() {
        m_engine = m_environment->quorvelWithAccount(m_account);
        m_seenOutputs = m_engine->outputsCollection()->collectionWithOverrides();
        m_seenInputs = {};
        m_seenAvailability = m_engine->scriptAvailability();
        m_lastStatus.reset();
        m_model.expectIn(m_engine->journals()->qvl_JSONObject());
        observe(kQVLOutputsDidChangeNotification, &Soak::outputsDidChange);
        observe(kQVLInputsDidChangeNotification, &Soak::inputsDidChange);
        observe(kQVLJournalsDidChangeNotification, &Soak::journalsDidChange);
        observe(kQVLQuorvelScriptAvailabilityDidChangeNotification, &Soak::availabilityDidChange);
        observe(kQVLGoogleAnalyticsEventsDidOccurNotification, &Soak::eventsDidOccur);
        m_tokens.push_back(QVLNotificationCenter::defaultCenter().addObserver(
            kQVLScriptManagerCurrentScriptNeedsReloadNotification, m_engine->scriptManager(),
            [this](const QVLNotification&) { ++m_reloads; }));
        m_engine->setInputs(m_inputs);
        m_engine->setInputsOverrides(m_inputsOverrides);
        m_engine->setOutputsOverrides(m_outputsOverrides);
        m_engine->setDisableOutputs(m_isDisabled);
        m_engine->start();
        m_isStarted = true;
    }
    void dropEngine() {
        m_tokens.clear();
        m_engine.reset();
    }
    void restart() {
        ++m_restarts;
        const std::weak_ptr<QVLQuorvel> old = m_engine;
        dropEngine();
        // Its queue may be saving its last answer still, and the next engine would read the one before.
        EXPECT_TRUE(runUntil([&] { return old.expired(); }));
        if (chance(10)) {
            // What another run of the same application did until it was killed is part of the history.
            Victim victim(m_directory.path("account"));
            victim.hear(1 + m_random() % 200);
            victim.kill();
            const QVLJSONDictionary saved = documentAt(journalsPath());
            EXPECT_GE(Victim::savedCount(m_directory.path("account")), victim.lastCount());
            for (const auto& [key, value] : saved.valueForKey(kQVLJournalsJSONKeyFlags).dictionaryOrEmpty()) {
                m_model.flags.emplace(key.text(), true);
            }
            if (const std::uint64_t count = Victim::savedCount(m_directory.path("account"))) {
                EXPECT_GE(count, m_model.events[kVictimEvent]);
                m_model.events[kVictimEvent] = count;
            }
        }
        makeEngine();
    }
    void startAgain() {
        if (!std::exchange(m_isStarted, true)) {
            m_engine->start();
            // Nothing is evaluated while an engine is stopped, and starting it evaluates nothing.
            m_engine->setInputs(m_inputs);
        }
    }

    void act() {
        ++m_actions;
        const std::string key(1, static_cast<char>('a' + m_random() % 4));
        switch (m_random() % 20) {
        case 0:
            return m_engine->setInputsOverrides(m_inputsOverrides = chance(2) ? QVLJSONDictionary() : anyValues());
        case 1:
            return m_engine->setOutputsOverrides(m_outputsOverrides = chance(2) ? QVLJSONDictionary() : anyValues());
        case 2:
            return m_engine->setDisableOutputs(m_isDisabled = chance(2));
        case 3:
            m_engine->stop();
            m_isStarted = false;
            return;
        case 4:
        case 5:
            return startAgain();
        case 6:
            m_version = 1 + static_cast<int>(m_random() % 5);
            return m_engine->fetchScriptNow();
        case 7:
            m_lie = chance(2) ? 1 + static_cast<int>(m_random() % 4) : 0;
            return m_engine->fetchScriptNow();
        case 8:
            return m_reachability.targets().back()->setFlags(chance(2) ? kQVLReachabilityFlagsReachable : 0U);
        case 9:
            return chance(10) ? resetJournals() : restart();
        case 10:
        case 11:
        case 12:
            ++m_model.events[key];
            ++m_model.notifications;
            return m_engine->journals()->eventForKey(key)->trigger();
        case 13:
        case 14:
            m_model.flags[key] = chance(2);
            ++m_model.notifications;
            return m_engine->journals()->flagForKey(key)->updateFlag(m_model.flags[key]);
        default:
            m_engine->setInputs(m_inputs = anyValues());
        }
    }
    void resetJournals() {
        m_model.notifications += (m_model.events.empty() ? 0 : 1) + (m_model.flags.empty() ? 0 : 1);
        m_model.events.clear();
        m_model.flags.clear();
        m_engine->resetJournals();
    }

    // --- What is told -----------------------------------------------------------------------------------------------

    void observe(const char* name, void (Soak::*receive)(const QVLNotification&)) {
        m_tokens.push_back(QVLNotificationCenter::defaultCenter().addObserver(
            name, m_engine, [this, receive](const QVLNotification& notification) { (this->*receive)(notification); }));
    }
    void outputsDidChange(const QVLNotification& notification) {
        const QVLJSONDictionary now = m_engine->outputsCollection()->collectionWithOverrides();
        const auto* const keys = notification.value<std::vector<std::string>>(kQVLChangedOutputKeys);
        EXPECT_THAT(*keys, ::testing::UnorderedElementsAreArray(differingKeys(now, m_seenOutputs)));
        EXPECT_FALSE(keys->empty());
        m_seenOutputs = now;
    }
    void inputsDidChange(const QVLNotification&) {
        const QVLJSONDictionary now = m_engine->inputsCollection()->collectionWithOverrides();
        EXPECT_FALSE(differingKeys(now, m_seenInputs).empty());
        m_seenInputs = now;
    }
    void journalsDidChange(const QVLNotification&) {
        --m_model.notifications;
        EXPECT_EQ(textOf(documentAt(journalsPath())), textOf(m_engine->journals()->qvl_JSONObject()));
    }
    void availabilityDidChange(const QVLNotification&) {
        const QVLScriptAvailability now = m_engine->scriptAvailability();
        EXPECT_NE(now, m_seenAvailability);
        m_seenAvailability = now;
    }
    void eventsDidOccur(const QVLNotification& notification) {
        using Events = std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>;
        for (const auto& event : *notification.value<Events>(kQVLGoogleAnalyticsEventsUserInfoKey)) {
            if (event->category() == kQVLEventLoadCategory) {
                EXPECT_FALSE(m_lastStatus && event->isEqual(*m_lastStatus)) << "told twice";
                m_lastStatus = event;
            }
        }
    }

    // --- What must hold ---------------------------------------------------------------------------------------------

    void checkpoint() {
        ++m_checkpoints;
        startAgain();
        settle();
        EXPECT_EQ(m_model.notifications, 0) << "journal changes that were not told, or told too often";
        m_model.expectIn(m_engine->journals()->qvl_JSONObject());
        m_model.expectIn(documentAt(journalsPath()));
        const QVLJSONDictionary outputs = m_engine->outputsCollection()->collectionWithOverrides();
        EXPECT_EQ(differingKeys(outputs, m_seenOutputs), std::vector<std::string>()) << "changed without a word";
        EXPECT_EQ(textOf(documentAt(outputsPath())), textOf(m_engine->outputs()));
        if (m_engine->lastRunDate()) {
            ++m_checkpointsWithScript;
            EXPECT_EQ(m_engine->lastRunVersion(), m_engine->lastLoadedFileHeaderVersion());
        }
        expectFreshEngineToAgree();
        expectNoUnknownErrors();
    }
    /// Waits until nothing is under way: neither a download nor anything on the queue.
    void settle() {
        bool isQuiet = false;
        while (!isQuiet) {
            const int reloads = m_reloads;
            bool isDrained = false;
            m_engine->performOnQueue([&](QVLQuorvel&) { m_runLoop->post([&] { isDrained = true; }); });
            ASSERT_TRUE(runUntil([&] {
                return isDrained && m_engine->scriptManager()->remoteScript()->state() != QVLScriptStateDownloading;
            }));
            isQuiet = !m_runLoop->runOnce(QVLTimeInterval(0)) && m_reloads == reloads;
        }
    }
    /// An engine that has never done anything else, with a copy of the files.
    void expectFreshEngineToAgree() {
        const std::string copy = m_directory.path("copy");
        fs::remove_all(copy);
        fs::copy(m_directory.path("account"), copy, fs::copy_options::recursive);
        const bool isLoaded = m_engine->lastRunDate().has_value();
        const std::string script =
            scriptOfVersion(std::atoi(m_engine->lastLoadedFileHeaderVersion().value_or("").c_str()));
        const QVLJSONDictionary outputs = m_engine->outputsCollection()->collectionWithOverrides();
        const QVLJSONDictionary raw = m_engine->outputs();

        const auto fresh = QVLQuorvel::initWithDirectory(copy, nullptr, nullptr);
        fresh->setInputsOverrides(m_inputsOverrides);
        fresh->setInputs(m_inputs);
        fresh->setOutputsOverrides(m_outputsOverrides);
        fresh->setDisableOutputs(m_isDisabled);
        fresh->start();
        bool isDone = false;
        fresh->performOnQueue([&](QVLQuorvel& quorvel) {
            if (isLoaded) {
                quorvel.loadScriptWithJSContent(script);
                quorvel.evaluateRules();
            }
            m_runLoop->post([&] { isDone = true; });
        });
        ASSERT_TRUE(runUntil([&] { return isDone; }));
        EXPECT_EQ(textOf(fresh->outputs()), textOf(raw));
        EXPECT_EQ(textOf(fresh->outputsCollection()->collectionWithOverrides()), textOf(outputs));
        m_model.expectIn(fresh->journals()->qvl_JSONObject());
    }
    void expectNoUnknownErrors() {
        for (const std::string& line : m_log->take()) {
            const bool isExpected = std::any_of(std::begin(kExpected), std::end(kExpected),
                                                [&](const char* part) { return line.find(part) != std::string::npos; });
            EXPECT_FALSE(line.starts_with("error") && !isExpected) << line;
        }
    }

    template <class Condition>
    [[nodiscard]] bool runUntil(Condition condition) {
        const auto end = Clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            if (Clock::now() > end) {
                return false;
            }
            m_runLoop->runOnce(std::chrono::milliseconds(50));
        }
        return true;
    }

    // --- Chance -----------------------------------------------------------------------------------------------------

    [[nodiscard]] bool chance(unsigned oneIn) { return m_random() % oneIn == 0; }
    [[nodiscard]] QVLJSONValue anyValue() {
        const QVLJSONValue values[] = {1,
                                       2.5,
                                       true,
                                       nullptr,
                                       "text",
                                       "throw",
                                       "fail",
                                       QVLJSONArray{1, "x"},
                                       QVLJSONDictionary{{"deep", QVLJSONArray{}}}};
        return values[m_random() % std::size(values)];
    }
    [[nodiscard]] QVLJSONDictionary anyValues() {
        QVLJSONDictionary values;
        for (const char* const key : {"a", "b", "c"}) {
            values = chance(3) ? values : values.withValueForKey(anyValue(), key);
        }
        return values;
    }

    [[nodiscard]] std::string journalsPath() const {
        return m_directory.path(std::string("account/quorvel/") + kQVLJournalsFile);
    }
    [[nodiscard]] std::string outputsPath() const {
        return m_directory.path(std::string("account/quorvel/") + kQVLOutputsCacheFile);
    }
    /// On the server's thread.
    LoopbackServer::Answer serve() {
        const std::string script = scriptOfVersion(m_version);
        switch (m_lie.exchange(0)) {
        case 1:
            return {.status = 503, .body = "down"};
        case 2:
            return {.body = "<html>Log in</html>"};
        case 3:
            return {.body = script.substr(0, script.size() / 2)};
        case 4:
            return {.body = "\xFF\xFE"};
        default:
            return {.body = script};
        }
    }

    static constexpr const char* kExpected[] = {
        "Failed to fetch script",           "has thrown JavaScript exception",
        "script error: asked for",          "Failed to serialize JavaScript response",
        "Did not find version information", "The file is not UTF-8 text"};

    const unsigned m_seed = static_cast<unsigned>(fromVariable("QVL_SOAK_SEED", std::random_device()() & 0x7fffffff));
    std::mt19937 m_random{m_seed};
    TemporaryDirectory m_directory;
    EnvironmentForTests m_environment{m_directory.path()};
    RecordedLog m_log;
    ScriptedReachability m_reachability;
    std::atomic<int> m_version = 1;
    std::atomic<int> m_lie = 0;
    LoopbackServer m_server{[this](const LoopbackServer::Request&) { return serve(); }};
    std::shared_ptr<QVLMainRunLoop> m_runLoop;
    std::shared_ptr<QVLAccount> m_account = QVLAccount::init();
    std::shared_ptr<QVLQuorvel> m_engine;
    std::vector<QVLToken> m_tokens;

    // What the host has set.
    QVLJSONDictionary m_inputs = {{"a", 1}};
    QVLJSONDictionary m_inputsOverrides;
    QVLJSONDictionary m_outputsOverrides;
    bool m_isDisabled = false;
    bool m_isStarted = false;
    // What the host has been told.
    QVLJSONDictionary m_seenOutputs;
    QVLJSONDictionary m_seenInputs;
    QVLScriptAvailability m_seenAvailability = QVLScriptAvailabilityUnavailable;
    std::shared_ptr<QVLAnalyticsEventInternal> m_lastStatus;
    JournalsModel m_model;
    int m_reloads = 0;
    long m_actions = 0;
    long m_restarts = 0;
    long m_checkpoints = 0;
    long m_checkpointsWithScript = 0;
};

TEST_F(Soak, AHostThatDoesEverythingInRandomOrderFindsWhatItWasPromised) {
    const std::chrono::milliseconds duration = std::chrono::seconds(fromVariable("QVL_SOAK_SECONDS", 3));
    std::cout << "QVL_SOAK_SEED=" << m_seed << std::endl;
    const auto start = Clock::now();
    std::int64_t memoryWhenWarm = 0;
    auto nextReport = start;
    makeEngine();
    while (Clock::now() - start < duration && !HasFailure()) {
        for (unsigned count = m_random() % 20; count > 0; --count) {
            act();
            if (chance(3)) {
                m_runLoop->runOnce(std::chrono::milliseconds(m_random() % 4));
            }
        }
        checkpoint();
        if (memoryWhenWarm == 0 && Clock::now() - start > duration / 4) {
            memoryWhenWarm = residentMemory();
        }
        if (Clock::now() >= nextReport) {
            nextReport += duration / 10;
            std::cout << m_actions << " actions, " << m_restarts << " restarts, " << m_checkpoints << " checkpoints ("
                      << m_checkpointsWithScript << " with a script), " << m_server.requests().size() << " requests, "
                      << residentMemory() / 1'000'000 << " MB, " << countIn("/proc/self/fd") << " files, "
                      << countIn("/proc/self/task") << " threads" << std::endl;
        }
    }
    if (duration >= std::chrono::seconds(30)) {
        EXPECT_LT(countIn("/proc/self/fd"), 64) << "open files add up";
        EXPECT_LT(countIn("/proc/self/task"), 64) << "threads add up";
        EXPECT_GT(m_checkpointsWithScript * 3, m_checkpoints) << "too little of what is promised was seen";
        EXPECT_TRUE(!kIsMemoryTelling || residentMemory() - memoryWhenWarm < 24'000'000) << "memory grows";
    }
}

} // namespace
