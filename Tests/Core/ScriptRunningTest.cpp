#include "EngineTest.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class ScriptRunningTest : public EngineTest {
protected:
    ScriptRunningTest() {
        engine->setInputs({{"plan", "free"}});
        engine->start();
        // Lets the evaluation that has no script yet come to nothing.
        settle();
    }

    /// Loads a script that supports the host at first and then answers with an expression.
    void loadAnswering(const std::string& expression) {
        ASSERT_TRUE(load("let runs = 0;\nquorvel.process = function (inputsText, journalsText) {\n"
                         "    if (runs++ === 0) { return '{\"%isCurrentAppSupported\": true}'; }\n    return " +
                         expression + ";\n};"));
        clearLog();
        analyticsEvents.clear();
    }
};

TEST_F(ScriptRunningTest, AnswersThatAreNoJSONObjectsTextAreBadResponses) {
    struct Case {
        const char* what;
        const char* expression;
        const char* error;
    };
    const std::string undefined = "Failed to serialize JavaScript response with error ";
    const Case cases[] = {
        {"an object", "({ tour: true })", "Failed to serialize JavaScript response with error "},
        {"an array's text", "'[1, 2]'", "Failed to serialize JavaScript response with error (null)."},
        {"a bare string's text", "'\"text\"'", "Failed to serialize JavaScript response with error "},
        {"nothing", "undefined", "Failed to serialize JavaScript response with error "},
        {"null", "null", "Failed to serialize JavaScript response with error "},
        {"an exception", "(() => { throw new Error('rule'); })()",
         "Failed to serialize JavaScript response with error "},
        {"endless recursion", "(function again() { return again() + 1; })()",
         "Failed to serialize JavaScript response with error "},
        {"10 MB of text", "'x'.repeat(10000000)", "Failed to serialize JavaScript response with error "},
        {"text with NUL", "'{}\\u0000'", "Failed to serialize JavaScript response with error "},
        {"text with a lone surrogate", "'{\"a\": \"\\ud800\"}'", "Failed to serialize JavaScript response with error "},
        {"an escaped lone low surrogate", R"('{"a": "\\udc00"}')",
         "Failed to serialize JavaScript response with error "},
        {"a symbol", "Symbol('s')", "JavaScript response should be a string, not symbol."},
        {"a hostile text form", "({ toString() { throw 1; } })", "JavaScript response should be a string, not object."},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.what);
        loadAnswering(row.expression);
        evaluate();
        EXPECT_THAT(errors(), ElementsAre(StartsWith(row.error)));
        EXPECT_THAT(statusEvents(), ElementsAre("bad_response|unknown"));
        EXPECT_EQ(engine->outputs().count(), 0U);
        // The next case's status must differ from this one's to be told.
        onQueue([](QVLQuorvel& quorvel) { quorvel.sendEventForLoadingStatus("between", std::nullopt); });
    }
}

TEST_F(ScriptRunningTest, AnErrorKeyOfAnyValueFailsTheRun) {
    loadAnswering(R"('{"%error": null, "tour": true}')");
    evaluate();
    EXPECT_THAT(errors(), ElementsAre("Failed to provide output, script error: <null>"));
    EXPECT_THAT(statusEvents(), ElementsAre("runtime_error|unknown"));
    EXPECT_FALSE(engine->outputForKey("tour"));
}

TEST_F(ScriptRunningTest, TheGlobalObjectMayGoAwayBetweenRuns) {
    ASSERT_TRUE(load(scriptWithBody("delete globalThis.quorvel; return JSON.stringify(answer);")));
    evaluate();
    EXPECT_THAT(statusEvents(), ElementsAre("bad_response|1.0"));
    ASSERT_TRUE(load(scriptWithBody("return JSON.stringify(answer);")));
}

TEST_F(ScriptRunningTest, WhatTheScriptThrewIsToldAtDebugLevel) {
    loadAnswering("(() => { throw new TypeError('why a rule failed'); })()");
    evaluate();
    EXPECT_THAT(messages(QVLLogLevelDebug), Contains(HasSubstr("TypeError: why a rule failed")));
}

TEST_F(ScriptRunningTest, ProcessGetsInputsWithOverridesAndJournalsAsText) {
    ASSERT_TRUE(load(scriptWithBody(
        "answer.echo = { inputs, journals, types: [typeof inputsText, typeof journalsText, arguments.length] };\n"
        "return JSON.stringify(answer);")));
    engine->setInputs(
        {{"plan", "free"}, {"count", 3}, {"text", "a/\"\\\n\u00e9\U0001F600"}, {"nul", std::string("\0", 1)}});
    engine->setInputsOverrides({{"plan", "team"}});
    engine->journals()->eventForKey("opened")->trigger();
    settle();
    const QVLJSONDictionary echo = engine->outputForKey("echo")->dictionaryValue().value();
    QVLJSONDictionary expected = engine->inputs().withValueForKey("team", "plan");
    EXPECT_EQ(echo.valueForKey("inputs"), QVLJSONValue(expected));
    EXPECT_EQ(echo.valueForKey("journals"), engine->journals()->qvl_JSONObject());
    EXPECT_EQ(echo.valueForKey("types"), QVLJSONValue(QVLJSONArray{"string", "string", 2}));
}

TEST_F(ScriptRunningTest, InputsThatAreNotJSONAreReportedEachTimeAndTheScriptDoesNotRun) {
    loadAnswering("'{\"ran\": true}'");
    engine->setInputs({{"ratio", std::numeric_limits<double>::quiet_NaN()}});
    settle();
    evaluate();
    EXPECT_THAT(errors(), ElementsAre("Invalid JSON object: {\"ratio\":nan}", "Invalid JSON object: {\"ratio\":nan}"));
    EXPECT_FALSE(engine->outputForKey("ran"));
    bool hasAny = true;
    EXPECT_EQ(engine->gatherInputsJSONHasAny(&hasAny), "{}");
    EXPECT_FALSE(hasAny);
}

TEST_F(ScriptRunningTest, TextsForTheScriptAreCompact) {
    bool hasAny = false;
    engine->setInputs({{"b", 1}, {"a", QVLJSONArray{true, nullptr}}});
    EXPECT_EQ(engine->gatherInputsJSONHasAny(&hasAny), R"({"a":[true,null],"b":1})");
    EXPECT_TRUE(hasAny);
    engine->setInputs({});
    EXPECT_EQ(engine->gatherInputsJSONHasAny(&hasAny), "{}");
    EXPECT_FALSE(hasAny);
    EXPECT_EQ(engine->gatherJournalsJSON(), R"({"__version__":1,"events":{},"flags":{}})");
}

TEST_F(ScriptRunningTest, MissingInputsAreNamedAndStrangeEntriesReported) {
    engine->checkForMissingInputsWithResponse({{kQVLScriptUsedInputs, QVLJSONArray{"a", 5, "plan", "b"}}});
    EXPECT_THAT(errors(), ElementsAre("Unexpected used inputs found: 5"));
    EXPECT_THAT(messages(QVLLogLevelDebug), ElementsAre("QVL script requires 2 missing inputs: 'a', 'b'"));
    clearLog();
    engine->checkForMissingInputsWithResponse({{kQVLScriptUsedInputs, "plan"}});
    EXPECT_THAT(errors(), ElementsAre("QVL script did not report any used inputs."));
}

TEST_F(ScriptRunningTest, AStatusIsToldOnceUntilStatusOrVersionChange) {
    ASSERT_TRUE(load(scriptWithBody("answer['%version'] = inputs.version;\n"
                                    "answer['%failureAreas'] = inputs.failures;\n"
                                    "return JSON.stringify(inputs.bad ? [] : answer);")));
    const auto run = [this](const QVLJSONDictionary& inputs) {
        engine->setInputs(inputs);
        settle();
    };
    run({{"version", "1.1"}});
    run({{"version", "1.1"}, {"failures", QVLJSONArray()}});
    run({{"version", "1.2"}, {"failures", "no array"}});
    run({{"version", "1.2"}, {"failures", QVLJSONArray{"tour"}}});
    run({{"bad", true}});
    run({{"version", "1.2"}});
    run({{"other", true}});
    EXPECT_THAT(statusEvents(), ElementsAre("run_succeeded|1.1", "run_succeeded|1.2", "run_with_errors|1.2",
                                            "bad_response|1.0", "run_succeeded|1.2", "run_succeeded|1.0"));
    EXPECT_EQ(engine->lastRunVersion(), std::nullopt);
}

TEST_F(ScriptRunningTest, NothingRunsOnTheMainThreadUnnoticed) {
    loadAnswering("'{\"ran\": true}'");
    engine->evaluateRules();
    EXPECT_THAT(errors(),
                Contains(StartsWith("Assertion failed: ![NSThread isMainThread]\nShould never execute on main "
                                    "thread\n")));
    settle();
    EXPECT_TRUE(engine->outputForKey("ran"));
}

} // namespace
