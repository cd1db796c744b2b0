#include "EngineTest.h"

EngineTest::EngineTest() {
    platform.install();
    engine = QVLQuorvel::initWithDirectory(directory.path(), nullptr, nullptr);
    observe(engine);
}

EngineTest::~EngineTest() {
    m_tokens.clear();
    engine.reset();
    settle();
}

void EngineTest::observe(const std::shared_ptr<QVLQuorvel>& observed) {
    for (const char* name : {kQVLQuorvelDidStartNotification, kQVLQuorvelScriptAvailabilityDidChangeNotification,
                             kQVLInputsDidChangeNotification, kQVLOutputsDidChangeNotification,
                             kQVLJournalsDidChangeNotification, kQVLGoogleAnalyticsEventsDidOccurNotification}) {
        m_tokens.push_back(QVLNotificationCenter::defaultCenter().addObserver(
            name, observed, [this](const QVLNotification& notification) {
                notifications.push_back(notification.name);
                if (const auto* keys = notification.value<std::vector<std::string>>(kQVLChangedOutputKeys)) {
                    changedOutputKeys = *keys;
                }
                using Events = std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>;
                if (const auto* events = notification.value<Events>(kQVLGoogleAnalyticsEventsUserInfoKey)) {
                    analyticsEvents.insert(analyticsEvents.end(), events->begin(), events->end());
                }
            }));
    }
}

void EngineTest::onQueue(std::function<void(QVLQuorvel&)> work) {
    engine->performOnQueue(std::move(work));
    settle();
}

bool EngineTest::load(std::string_view script) {
    bool isLoaded = false;
    onQueue([&](QVLQuorvel& quorvel) { isLoaded = quorvel.loadScriptWithJSContent(script); });
    return isLoaded;
}

void EngineTest::evaluate() {
    onQueue([](QVLQuorvel& quorvel) { quorvel.evaluateRules(); });
}

std::string EngineTest::scriptWithBody(std::string_view body, std::string_view version) {
    return "// Quorvel " + std::string(version) + ".js\n" +
           "quorvel.process = function (inputsText, journalsText) {\n"
           "    const inputs = JSON.parse(inputsText);\n"
           "    const journals = JSON.parse(journalsText);\n"
           "    const answer = { '%version': '" +
           std::string(version) + "', '%isCurrentAppSupported': true, '%usedInputs': [] };\n" + std::string(body) +
           "\n};\n";
}

std::vector<std::string> EngineTest::statusEvents() const {
    std::vector<std::string> statuses;
    for (const auto& event : analyticsEvents) {
        if (event->category() == kQVLEventLoadCategory) {
            statuses.push_back(event->action().value_or("") + "|" + event->label().value_or(""));
        }
    }
    return statuses;
}

std::vector<std::string> EngineTest::messages(QVLLogLevel level) const {
    std::vector<std::string> messages;
    for (const RecordingLogger::Line& line : log->lines()) {
        if (line.level == level) {
            messages.push_back(line.message);
        }
    }
    return messages;
}
