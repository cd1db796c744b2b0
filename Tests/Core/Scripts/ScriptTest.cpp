#include "QVLScript.h"

#include "QVLDateFormatter.h"
#include "RecordingLogger.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kDate = "2020-01-01T10:00:00Z";
constexpr const char* kURL = "https://scripts.example/Quorvel.1.0.js";

QVLDate dateOf(const char* text) {
    return QVLDateFormatter::sharedFormatter().dateFromString(text).value();
}

std::shared_ptr<QVLScript> scriptOf(std::optional<std::string> version, QVLScriptSource source) {
    return QVLScript::initWithVersion(std::move(version), std::nullopt, "Title", std::nullopt, source);
}

TEST(ScriptVersion, IsFoundInTheFirstHeaderLine) {
    struct Row {
        std::string text;
        std::optional<std::string> version;
    };
    const std::vector<Row> rows = {
        {"// Quorvel 2.14.0.js", "2.14.0"},
        {"// Quorvel-2.14.0.js", "2.14.0"},
        {"// Build: Quorvel 2.14.0", "2.14.0"},
        {"// Build: Quorvel-2.14.0.js\nx();\n", "2.14.0"},
        {"// Quorvel 1.0.0xjs", "1.0.0"},
        {"// Quorvel 1.0.0js", "1.0."},
        {"// Quorvel .js", ".js"},
        {"// Quorvel x.js.js", "x.js"},
        {"// Quorvel 1.0 beta (\xC3\xA9) ", "1.0 beta (\xC3\xA9) "},
        {"/*\n * x\n */\n\n// Build: Quorvel 3.1.0\n", "3.1.0"},
        {"// Quorvel 1\n// Quorvel 2\n", "1"},
        {"// Quorvel \n// Quorvel 2", "2"},
        {"x\r\n// Quorvel 4.5.js\r\ny", "4.5"},
        {"// Quorvel 4.5\r\n", "4.5"},
        {"x\r// Quorvel 4.5.js\ry", "4.5"},
        {"", std::nullopt},
        {"//Quorvel 3.1.0", std::nullopt},
        {"// Quorvel_3.1.0", std::nullopt},
        {"// Quorvel", std::nullopt},
        {"// quorvel 1", std::nullopt},
        {" // Quorvel 1", std::nullopt},
        {"x // Quorvel 1", std::nullopt},
        {"// Quorvel\n1.0", std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(QVLScript::parseScriptVersionFromJSContent(row.text), row.version) << row.text;
    }
    EXPECT_EQ(QVLScript::parseScriptVersionFromJSContent(std::string("\0\n// Quorvel 1", 14)), "1");
}

TEST(ScriptVersion, LongTextsAreSearchedThrough) {
    constexpr std::size_t kLength = 10'000'000;
    EXPECT_FALSE(QVLScript::parseScriptVersionFromJSContent(std::string(kLength, 'x')));
    std::string lines;
    while (lines.size() < kLength) {
        lines += "// Quorvel_1 // Quorvel\n";
    }
    EXPECT_FALSE(QVLScript::parseScriptVersionFromJSContent(lines));
    EXPECT_EQ(QVLScript::parseScriptVersionFromJSContent(lines + "// Quorvel 7.js"), "7");
}

class Script : public testing::Test {
protected:
    Script() { m_platform.install(); }

    std::shared_ptr<QVLScript> scriptWithContent(const std::string& text) const {
        std::ofstream(m_path, std::ios::binary) << text;
        return scriptAtPath();
    }
    std::shared_ptr<QVLScript> scriptAtPath() const {
        return QVLScript::scriptWithPath(m_path, "Remote", QVLURL::fromString(kURL), QVLScriptSourceRemote);
    }

    TestPlatform m_platform;
    TemporaryDirectory m_directory;
    const std::string m_path = m_directory.path("Quorvel.js");
    RecordedLog m_log;
};

TEST_F(Script, AFeedEntryBecomesARecord) {
    const auto script =
        QVLScript::scriptWithJSONObject({{"version", "1.0"}, {"date", "2020-01-01T12:00:00+02:00"}, {"url", kURL}});
    ASSERT_NE(script, nullptr);
    EXPECT_EQ(script->version(), "1.0");
    EXPECT_EQ(script->title(), "1.0");
    EXPECT_EQ(script->dateCreated(), dateOf(kDate));
    EXPECT_EQ(script->url(), QVLURL::fromString(kURL));
    EXPECT_EQ(script->source(), QVLScriptSourceNightly);
    EXPECT_EQ(script->state(), QVLScriptStateUnknown);
    EXPECT_THAT(m_log->take(), IsEmpty());
}

TEST_F(Script, AFeedEntryThatLacksSomethingIsRefusedWithOneLine) {
    const QVLJSONDictionary whole{{"version", "1.0"}, {"date", kDate}, {"url", kURL}};
    struct Row {
        const char* member;
        QVLJSONValue value;
        const char* reason;
    };
    constexpr const char* kNoVersion = "Script not created due to missing 'version' property in JSON: ";
    constexpr const char* kNoDate = "Script '1.0' not created due to missing or invalid 'date' property in JSON: ";
    constexpr const char* kNoURL = "Script '(null)' not created due to missing or invalid 'url' property in JSON: ";
    const std::vector<Row> rows = {
        {"version", QVLJSONValue(), kNoVersion},  {"date", QVLJSONValue(), kNoDate},
        {"date", "2020-01-01 10:00:00", kNoDate}, {"date", 1577872800, kNoDate},
        {"url", QVLJSONValue(), kNoURL},          {"url", "not a URL", kNoURL},
        {"url", QVLJSONArray{kURL}, kNoURL},
    };
    for (const Row& row : rows) {
        const QVLJSONDictionary entry = whole.withValueForKey(row.value, row.member);
        EXPECT_EQ(QVLScript::scriptWithJSONObject(entry), nullptr) << entry.description();
        EXPECT_THAT(m_log->take(), ElementsAre("error QVLScript: " + (row.reason + entry.description())));
    }
}

TEST_F(Script, AFileBecomesAnAvailableRecord) {
    m_platform.fileManager->creationDate = [](const std::string&) { return dateOf(kDate); };
    const auto script = scriptWithContent("// Quorvel 2.0.js\n");
    EXPECT_EQ(script->version(), "2.0");
    EXPECT_EQ(script->title(), "Remote");
    EXPECT_EQ(script->dateCreated(), dateOf(kDate));
    EXPECT_EQ(script->url(), QVLURL::fromString(kURL));
    EXPECT_EQ(script->source(), QVLScriptSourceRemote);
    EXPECT_EQ(script->state(), QVLScriptStateAvailable);
    EXPECT_THAT(m_log->take(), IsEmpty());
}

TEST_F(Script, AFileWithoutAHeaderOrADateIsAvailableAllTheSame) {
    m_platform.fileManager->creationDateFault = FaultyFileManager::always("no attributes");
    const auto script = scriptWithContent("x();");
    EXPECT_FALSE(script->version());
    EXPECT_FALSE(script->dateCreated());
    EXPECT_EQ(script->state(), QVLScriptStateAvailable);
    EXPECT_THAT(m_log->take(),
                ElementsAre("error QVLScript: Did not find version information in script at path '" + m_path + "'",
                            "error QVLScript: Could not get file attributes of script at path '" + m_path +
                                "', error: no attributes"));
}

TEST_F(Script, AFileThatIsMissingOrNoTextIsUnknown) {
    const std::string line = "info QVLScript: Did not find script at path '" + m_path + "'";
    for (const auto& script : {scriptAtPath(), scriptWithContent("// Quorvel 1.0 \xFF")}) {
        EXPECT_FALSE(script->version());
        EXPECT_FALSE(script->dateCreated());
        EXPECT_EQ(script->title(), "Remote");
        EXPECT_EQ(script->state(), QVLScriptStateUnknown);
    }
    EXPECT_THAT(m_log->take(), ElementsAre(line, line));
}

TEST_F(Script, ObserversAreToldOfEveryAssignmentAndMayRemoveOthersAndDropTheRecord) {
    auto script = scriptOf("1", QVLScriptSourceRemote);
    std::string calls;
    QVLToken second;
    QVLToken added;
    QVLToken first = script->observeState([&](QVLScript& told) {
        calls += "first ";
        first.reset();
        second.reset();
        added = told.observeState([&calls](QVLScript&) { calls += "added "; });
    });
    second = script->observeState([&](QVLScript&) { calls += "second "; });
    const QVLToken dropping = script->observeState([&](QVLScript&) {
        calls += "dropping ";
        script.reset();
    });
    const QVLToken last = script->observeState([&](QVLScript&) { calls += "last"; });
    script->setState(QVLScriptStateFailed);
    EXPECT_EQ(calls, "first dropping last");
    EXPECT_EQ(script, nullptr);
    const auto other = scriptOf("1", QVLScriptSourceRemote);
    QVLToken token =
        other->observeState([&](QVLScript& told) { calls += told.state() == QVLScriptStateFailed ? "!" : "?"; });
    other->setState(QVLScriptStateFailed);
    other->setState(QVLScriptStateFailed);
    token.reset();
    other->setState(QVLScriptStateFailed);
    EXPECT_EQ(calls, "first dropping last!!");
}

TEST_F(Script, EqualsRecordsOfTheSameVersionAndSource) {
    const auto script = scriptOf("1", QVLScriptSourceRemote);
    const auto same =
        QVLScript::initWithVersion("1", dateOf(kDate), "Other", QVLURL::fromString(kURL), QVLScriptSourceRemote);
    same->setState(QVLScriptStateAvailable);
    EXPECT_TRUE(script->isEqual(*same));
    EXPECT_EQ(script->hash(), same->hash());
    EXPECT_FALSE(script->isEqual(*scriptOf("1", QVLScriptSourceNightly)));
    EXPECT_FALSE(script->isEqual(*scriptOf("1.0", QVLScriptSourceRemote)));
    EXPECT_FALSE(script->isEqual(*scriptOf(std::nullopt, QVLScriptSourceRemote)));
    EXPECT_FALSE(script->isEqual(QVLNamedObject("1")));
    const auto unversioned = scriptOf(std::nullopt, QVLScriptSourceRemote);
    EXPECT_TRUE(unversioned->isEqual(*unversioned));
    EXPECT_FALSE(unversioned->isEqual(*scriptOf(std::nullopt, QVLScriptSourceRemote)));
    EXPECT_EQ(unversioned->hash(), 1U);
}

} // namespace
