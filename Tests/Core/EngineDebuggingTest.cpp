#include "EngineTest.h"

#include "EnvironmentForTests.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EngineDebuggingTest : public EngineTest {
protected:
    EngineDebuggingTest() {
        std::ofstream(scriptPath) << scriptWithBody("return JSON.stringify(answer);");
        useTemplate("%script_path%\n%inputs_json%\n%journals_json%");
        engine->start();
        settle();
    }

    /// Loads the script file, which takes inputs, and then sets others.
    void loadScript(const QVLJSONDictionary& inputs = {{"plan", "free"}}) {
        engine->setInputs({{"plan", "free"}});
        bool isLoaded = false;
        onQueue([&](QVLQuorvel& quorvel) { isLoaded = quorvel.loadScriptAtPath(scriptPath); });
        ASSERT_TRUE(isLoaded);
        engine->setInputs(inputs);
        settle();
        clearLog();
    }
    void unloadScript() {
        onQueue([](QVLQuorvel& quorvel) { static_cast<void>(quorvel.loadScriptAtPath("/nowhere")); });
        clearLog();
    }
    void useTemplate(const std::string& text) {
        std::ofstream(templatePath, std::ios::binary) << text;
        platform.bundle->setPathForResource("debugTemplate.html", templatePath);
    }
    [[nodiscard]] std::string page() const {
        std::ostringstream text;
        text << std::ifstream(pagePath).rdbuf();
        return text.str();
    }

    EnvironmentForTests environment{directory.path()};
    const std::string scriptPath = directory.path("rules.js");
    const std::string templatePath = directory.path("template.html");
    const std::string pagePath = directory.path("quorvel/debug.html");
    const std::string emptyJournals = R"({"__version__":1,"events":{},"flags":{}})";
};

TEST_F(EngineDebuggingTest, ThePageHoldsTheScriptsPathInputsWithOverridesAndJournalsWhereverTheTemplateWantsThem) {
    useTemplate("<%script_path%><%inputs_json%><%journals_json%>%script_path%%inputs_json%%journals_json%% %inputs%");
    loadScript({{"plan", "free"}, {"text", "a/b"}});
    engine->setInputsOverrides({{"plan", "team"}});
    settle();
    EXPECT_EQ(engine->generateDebugHTML(), pagePath);
    EXPECT_EQ(engine->debugHTMLPath(), pagePath);
    const std::string inputs = R"({"plan":"team","text":"a\/b"})";
    EXPECT_EQ(page(), "<" + scriptPath + "><" + inputs + "><" + emptyJournals + ">" + scriptPath + inputs +
                          emptyJournals + "% %inputs%");
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(EngineDebuggingTest, ReplacementsAreMadeInOrderAndNothingIsEscaped) {
    useTemplate("%script_path%|%inputs_json%");
    loadScript({{"a", "%script_path%<&\"%journals_json%"}});
    ASSERT_TRUE(engine->generateDebugHTML());
    EXPECT_EQ(page(), scriptPath + R"(|{"a":"%script_path%<&\")" + emptyJournals + "\"}");
}

TEST_F(EngineDebuggingTest, WithoutInputsThePageHoldsAnEmptyObject) {
    loadScript({});
    ASSERT_TRUE(engine->generateDebugHTML());
    EXPECT_EQ(page(), scriptPath + "\n{}\n" + emptyJournals);
}

TEST_F(EngineDebuggingTest, AStalePageNeverOutlivesItsScript) {
    EXPECT_EQ(engine->generateDebugHTML(), std::nullopt);
    loadScript();
    ASSERT_TRUE(engine->generateDebugHTML());
    unloadScript();
    EXPECT_EQ(engine->generateDebugHTML(), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(pagePath));
    EXPECT_THAT(log->take(), IsEmpty());

    std::ofstream(pagePath) << "stale";
    platform.fileManager->removeFault = FaultyFileManager::always("Busy");
    EXPECT_EQ(engine->generateDebugHTML(), std::nullopt);
    EXPECT_THAT(log->take(), ElementsAre("error QVLQuorvel: Could not delete item at path: 'Busy'"));
}

TEST_F(EngineDebuggingTest, AFailureIsOneErrorLineAndLeavesTheEarlierPage) {
    const std::string couldNotLoad = "Could not load template: " + templatePath + ", error: ";
    struct Case {
        const char* what;
        std::function<void()> breakIt;
        std::string line;
    };
    const Case cases[] = {
        {"no template", [this] { platform.bundle->setPathForResource("debugTemplate.html", std::nullopt); },
         "Could not find template: debugTemplate.html"},
        {"an unreadable template",
         [this] { platform.fileManager->readFault = FaultyFileManager::atPathsEndingWith("template.html", "Denied"); },
         couldNotLoad + "Denied"},
        {"a template that is not UTF-8", [this] { useTemplate("%script_path%\xFF"); },
         couldNotLoad + "The file is not UTF-8 text."},
        {"a failed write",
         [this] { platform.fileManager->writeFault = FaultyFileManager::atPathsEndingWith("debug.html", "Disk full"); },
         "Could not create debug HTML: " + pagePath + ", error: Disk full"},
    };
    loadScript();
    ASSERT_TRUE(engine->generateDebugHTML());
    const std::string earlier = page();
    for (const Case& row : cases) {
        SCOPED_TRACE(row.what);
        row.breakIt();
        EXPECT_EQ(engine->generateDebugHTML(), std::nullopt);
        EXPECT_THAT(log->take(), ElementsAre("error QVLQuorvel: " + row.line));
        EXPECT_EQ(page(), earlier);
        platform.fileManager->readFault = nullptr;
        platform.fileManager->writeFault = nullptr;
        useTemplate("%script_path%");
    }
}

TEST_F(EngineDebuggingTest, WithoutAnEnvironmentDirectoryThereIsNoPage) {
    loadScript();
    environment->setApplicationSupportDirectory(directory.path("missing/parent"));
    EXPECT_EQ(engine->generateDebugHTML(), std::nullopt);
    EXPECT_EQ(errors().back(), "Could not create debug HTML: (null), error: There is no environment directory.");
}

TEST_F(EngineDebuggingTest, LogDataTellsInputsJournalsAndScriptOutputsWithOverridesInTheHostsLanguage) {
    platform.localization->texts = {{"Quorvel inputs", "Eingaben"}};
    loadScript({{"a", 1}});
    engine->setInputsOverrides({{"b", QVLJSONArray{2}}});
    engine->outputsCollection()->setCollection({{"tour", false}});
    engine->setOutputsOverrides({{"tour", true}});
    engine->abtestOutputsCollection()->setCollection({{"group", "A"}});
    settle();
    clearLog();
    engine->logData();
    const std::string journals = "{\n  \"__version__\" : 1,\n  \"events\" : {},\n  \"flags\" : {}\n}";
    const std::vector<std::string> lines = log->take();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "info QVLQuorvel: Eingaben: \n{\n  \"a\" : 1,\n  \"b\" : [\n    2\n  ]\n}");
    EXPECT_EQ(lines[1], "info QVLQuorvel: Quorvel journals: \n" + journals);
    EXPECT_THAT(lines[2], testing::StartsWith("info QVLQuorvel: Quorvel outputs: \n{\n"));
    EXPECT_THAT(lines[2], testing::HasSubstr("\n  \"tour\" : true"));
    EXPECT_THAT(lines[2], testing::Not(testing::HasSubstr("group")));
}

TEST_F(EngineDebuggingTest, WhatIsNoJSONObjectIsRefusedInTheLog) {
    clearLog();
    engine->logJSONObject("text", "What");
    engine->logJSONObject({}, "What");
    engine->logJSONObject(QVLJSONDictionary{{"a", std::numeric_limits<double>::infinity()}}, "What");
    EXPECT_THAT(log->take(), ElementsAre("error QVLQuorvel: Invalid JSON object: text",
                                         "error QVLQuorvel: Invalid JSON object: (null)",
                                         "error QVLQuorvel: Invalid JSON object: {\"a\":inf}"));
}

} // namespace
