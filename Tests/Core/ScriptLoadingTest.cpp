#include "EngineTest.h"

#include "QVLUTF8.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class ScriptLoadingTest : public EngineTest {
protected:
    ScriptLoadingTest() { engine->setInputs({{"plan", "free"}}); }

    std::string fileWith(const std::string& content) {
        std::string path = directory.path("script.js");
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    bool loadFile(const std::string& path) {
        bool isLoaded = true;
        onQueue([&](QVLQuorvel& quorvel) { isLoaded = quorvel.loadScriptAtPath(path); });
        return isLoaded;
    }
};

TEST_F(ScriptLoadingTest, AGoodFileLoadsAndLeavesItsPathAndHeaderVersion) {
    const std::string path = fileWith(scriptWithBody("return JSON.stringify(answer);", "2.14.0"));
    EXPECT_TRUE(loadFile(path));
    EXPECT_EQ(engine->loadedScriptPath(), path);
    EXPECT_EQ(engine->lastLoadedFileHeaderVersion(), "2.14.0");
    EXPECT_THAT(statusEvents(), IsEmpty());
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ScriptLoadingTest, EachWayThatAFileCannotBeLoadedHasItsLineAndStatus) {
    const std::string missing = directory.path("missing.js");
    EXPECT_FALSE(loadFile(missing));
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_THAT(statusEvents(), ElementsAre("not_found|unknown"));

    const std::string folder = directory.path("folder.js");
    std::filesystem::create_directory(folder);
    EXPECT_FALSE(loadFile(folder));
    EXPECT_THAT(errors(), ElementsAre("Failed to load script file '" + folder + "' - directory found"));

    clearLog();
    const std::string notUTF8 = fileWith("// Quorvel 1.0\n\xff\xfe");
    EXPECT_FALSE(loadFile(notUTF8));
    EXPECT_THAT(errors(), ElementsAre(StartsWith("Failed to load script file '" + notUTF8 + "' with error ")));
    // The same status with the same version is told once.
    EXPECT_THAT(statusEvents(), ElementsAre("not_found|unknown"));
    EXPECT_EQ(engine->loadedScriptPath(), std::nullopt);
}

TEST_F(ScriptLoadingTest, EmptyTextIsRefusedWithoutAStatusAndKeepsTheLoadedScript) {
    ASSERT_TRUE(load(scriptWithBody("answer.kept = true; return JSON.stringify(answer);")));
    EXPECT_FALSE(load(""));
    EXPECT_THAT(errors(), ElementsAre("Failed to load empty JavaScript."));
    EXPECT_THAT(statusEvents(), IsEmpty());
    EXPECT_EQ(engine->lastLoadedFileHeaderVersion(), std::nullopt);
    engine->start();
    evaluate();
    EXPECT_TRUE(engine->outputForKey("kept"));
}

TEST_F(ScriptLoadingTest, AScriptThatLeavesNoProcessIsNotInstalledAndItsHeaderVersionLabelsTheEvent) {
    struct Case {
        const char* what;
        const char* script;
        const char* exceptionPart;
    };
    const Case cases[] = {
        {"throws before defining it", "throw new Error('early');", "Error: early"},
        {"does not parse", "quorvel.process = function (", "SyntaxError"},
        {"leaves it null", "quorvel.process = null;", "(null)"},
        {"deletes the global object", "quorvel.process = () => 1; delete globalThis.quorvel;", "(null)"},
        {"replaces the global object by a number", "quorvel = 7;", "(null)"},
        {"shadows the global object", "let quorvel = { process() { return '{}'; } };", "(null)"},
        {"has a getter that throws",
         "Object.defineProperty(quorvel, 'process', { get() { throw new Error('getter'); } });", "getter"},
        {"throws what has no text", "throw { toString() { throw 1; } };", ""},
        {"recurses without end", "(function again() { again(); })();", "RangeError"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.what);
        clearLog();
        analyticsEvents.clear();
        const std::string version = std::to_string(&row - cases);
        EXPECT_FALSE(load("// Quorvel 9." + version + "\n" + row.script));
        EXPECT_THAT(errors(),
                    ElementsAre(testing::AllOf(StartsWith("Script evaluation has thrown JavaScript exception: "),
                                               HasSubstr(row.exceptionPart))));
        EXPECT_THAT(statusEvents(), ElementsAre("not_installed|9." + version));
        EXPECT_EQ(engine->lastLoadedFileHeaderVersion(), "9." + version);
    }
}

TEST_F(ScriptLoadingTest, AScriptThatThrowsAfterDefiningProcessStillLoads) {
    EXPECT_TRUE(load(scriptWithBody("return JSON.stringify(answer);") + "throw new Error('late');"));
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_THAT(messages(QVLLogLevelDebug), testing::Contains(HasSubstr("Error: late")));
}

TEST_F(ScriptLoadingTest, AnAnswerThatDoesNotSupportTheHostIsNotSupported) {
    for (const char* answer : {"{}", R"({"%isCurrentAppSupported": false})", R"({"%isCurrentAppSupported": "true"})",
                               R"({"%isCurrentAppSupported": 0})"}) {
        SCOPED_TRACE(answer);
        clearLog();
        EXPECT_FALSE(load("quorvel.process = () => '" + std::string(answer) + "';"));
        EXPECT_THAT(messages(QVLLogLevelInfo), ElementsAre("Script has no rules compatible with the current version."));
    }
    EXPECT_THAT(statusEvents(), ElementsAre("not_supported|unknown"));
    EXPECT_TRUE(load(R"(quorvel.process = () => '{"%isCurrentAppSupported": 2}';)"));
}

TEST_F(ScriptLoadingTest, WithoutInputsTheSupportTestCannotRunAndSaysNothing) {
    engine->setInputs({});
    EXPECT_FALSE(load(scriptWithBody("return JSON.stringify(answer);")));
    EXPECT_THAT(messages(QVLLogLevelInfo), IsEmpty());
    EXPECT_THAT(statusEvents(), ElementsAre("not_supported|1.0"));
}

TEST_F(ScriptLoadingTest, TheGlobalObjectIsFreshAtEveryLoadAndKeptBetweenRuns) {
    const std::string counting = scriptWithBody(
        "globalThis.runs = (globalThis.runs || 0) + 1; answer.runs = runs; return JSON.stringify(answer);");
    engine->start();
    ASSERT_TRUE(load(counting));
    evaluate();
    EXPECT_EQ(engine->outputForKey("runs")->integerValue(), 2);
    ASSERT_TRUE(load(counting));
    evaluate();
    EXPECT_EQ(engine->outputForKey("runs")->integerValue(), 2);
}

TEST_F(ScriptLoadingTest, LogLevelTakesAnythingAndHasNoEffect) {
    EXPECT_TRUE(load(scriptWithBody("return JSON.stringify(answer);") + R"(
        for (const level of ['debug', 'warn', 'nonsense', 3, null, undefined, Symbol('s')]) {
            if (quorvel.logLevel({ logLevel: level }) !== undefined) { delete quorvel.process; }
        }
        quorvel.logLevel();
        quorvel.logLevel('warn');
        quorvel.logLevel({ get logLevel() { throw new Error('hostile'); } });
    )"));
    EXPECT_THAT(errors(), IsEmpty());
}

} // namespace
