#include "QVLLinuxJavaScriptEngine.h"

#include <JavaScriptCore/JavaScript.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <limits>
#include <thread>

namespace {

using Texts = std::vector<std::shared_ptr<const QVLJavaScriptText>>;

class QVLLinuxJavaScriptContextTest : public testing::Test {
protected:
    QVLLinuxJavaScriptContextTest() { context->evaluateScript("quorvel = {};"); }

    /// Calls the member "process" with these texts.
    QVLJavaScriptAnswer process(const std::vector<std::string_view>& texts = {}) {
        Texts arguments;
        for (const auto text : texts) {
            arguments.push_back(engine.makeText(text));
        }
        return context->callMember("quorvel", "process", arguments);
    }
    /// Calls a function of this source.
    QVLJavaScriptAnswer answerOf(std::string_view function, const std::vector<std::string_view>& texts = {}) {
        EXPECT_TRUE(context->evaluateScript("quorvel.process = " + std::string(function)));
        return process(texts);
    }
    std::string exceptionText() {
        return context->takeException().value_or(QVLJavaScriptException{"(none)", 0, ""}).text;
    }

    QVLLinuxJavaScriptEngine engine;
    std::atomic<bool> mayEnd = false;
    std::unique_ptr<QVLJavaScriptContext> context = engine.makeContext([this] { return mayEnd.load(); });
};

} // namespace

TEST_F(QVLLinuxJavaScriptContextTest, CallsAMemberWithTextsAndItsOwnObjectAndAnswersWithText) {
    const auto answer = answerOf(
        "function (a, b) { return JSON.stringify([a, b, arguments.length, this === quorvel]); }", {"{\"a\": 1}", ""});
    EXPECT_EQ(answer.text, R"(["{\"a\": 1}","",2,true])");
    EXPECT_EQ(answer.className, "string");
    EXPECT_FALSE(answer.isInterrupted);
    EXPECT_EQ(exceptionText(), "(none)");
    EXPECT_TRUE(context->hasMember("quorvel", "process"));
}

TEST_F(QVLLinuxJavaScriptContextTest, TextsGoThroughUnchangedWhateverTheyHold) {
    context->evaluateScript("quorvel.process = text => text");
    std::string everything(1, '\0');
    everything += "a\"\\\n\x7F";
    everything += "äß€\u2028\uFFFF😀";
    EXPECT_EQ(process({everything}).text, everything);
    const std::string ascii = std::string(1'000'000, 'x') + '\0' + "y";
    EXPECT_EQ(process({ascii}).text, ascii);
    EXPECT_EQ(process({""}).text, "");
    EXPECT_EQ(process({"a\xFF\xC3"}).text, "a\uFFFD\uFFFD");
    EXPECT_EQ(answerOf("() => 'a\\uD800b\\uDE00'").text, "a\xED\xA0\x80"
                                                         "b\xED\xB8\x80");
    EXPECT_EQ(answerOf("text => text.length.toString()", {"😀"}).text, "2");
}

TEST_F(QVLLinuxJavaScriptContextTest, ASourceTextIsUsedWholeWithNULAndForeignCharacters) {
    const std::string source = std::string("quorvel.process = () => 'ü") + '\0' + "€' + '!'";
    EXPECT_TRUE(context->evaluateScript(source));
    EXPECT_EQ(process().text, std::string("ü") + '\0' + "€!");
}

TEST_F(QVLLinuxJavaScriptContextTest, EveryReturnedValueHasATextFormAndAKind) {
    struct Row {
        const char* value;
        std::optional<std::string> text;
        const char* kind;
    };
    const std::vector<Row> rows = {
        {"undefined", "undefined", "undefined"},
        {"null", "null", "null"},
        {"true", "true", "boolean"},
        {"-0.5", "-0.5", "number"},
        {"'text'", "text", "string"},
        {"10n ** 20n", "100000000000000000000", "bigint"},
        {"({})", "[object Object]", "object"},
        {"[1, [2]]", "1,2", "array"},
        {"({ toString: () => 'own' })", "own", "object"},
        {"Symbol('s')", std::nullopt, "symbol"},
        {"Object.create(null)", std::nullopt, "object"},
        {"({ toString() { throw 1; } })", std::nullopt, "object"},
        {"({ toString() { return {}; }, valueOf: 1 })", std::nullopt, "object"},
        {"({ get toString() { throw null; } })", std::nullopt, "object"},
    };
    for (const Row& row : rows) {
        const auto answer = answerOf("() => " + std::string(row.value));
        EXPECT_EQ(answer.text, row.text) << row.value;
        EXPECT_EQ(answer.className, row.kind) << row.value;
        EXPECT_EQ(context->takeException().has_value(), !row.text) << row.value;
        EXPECT_FALSE(answer.isInterrupted) << row.value;
    }
}

TEST_F(QVLLinuxJavaScriptContextTest, AMemberThatCannotBeCalledAnswersUndefined) {
    for (const char* const member : {"undefined", "null", "5", "'text'", "{}", "Symbol()", "class {}"}) {
        const bool isClass = std::string(member) == "class {}";
        const auto answer = answerOf(member);
        EXPECT_EQ(answer.text, "undefined") << member;
        EXPECT_EQ(answer.className, "undefined") << member;
        EXPECT_EQ(context->takeException().has_value(), isClass) << member;
    }
    EXPECT_EQ(context->callMember("quorvel", "none", {}).text, "undefined");
    EXPECT_EQ(context->callMember("nothing", "none", {}).text, "undefined");
    EXPECT_EQ(exceptionText(), "(none)");
}

TEST_F(QVLLinuxJavaScriptContextTest, TheGlobalObjectMayBeGoneOrSomethingElse) {
    struct Row {
        const char* source;
        const char* exception;
    };
    const std::vector<Row> rows = {
        {"delete globalThis.quorvel", "(none)"},
        {"quorvel = 5", "(none)"},
        {"quorvel = 'text'", "(none)"},
        {"quorvel = null", "(none)"},
        {"Object.defineProperty(globalThis, 'quorvel', { get() { throw new Error('gone'); }, configurable: true })",
         "Error: gone"},
        {"delete globalThis.quorvel; quorvel = new Proxy({}, { get() { throw 7; }, set() { throw 7; } })", "7"},
        {"quorvel = Object.freeze({ get process() { throw 8; } })", "8"},
    };
    for (const Row& row : rows) {
        EXPECT_TRUE(context->evaluateScript(row.source));
        EXPECT_EQ(exceptionText(), "(none)") << row.source;
        EXPECT_FALSE(context->hasMember("quorvel", "process")) << row.source;
        EXPECT_EQ(exceptionText(), row.exception) << row.source;
        context->setFunction("quorvel", "process", [](const auto&) {});
        context->takeException();
        EXPECT_EQ(process().text, "undefined") << row.source;
        EXPECT_EQ(exceptionText(), row.exception) << row.source;
    }
}

TEST_F(QVLLinuxJavaScriptContextTest, AnExceptionSaysWhatWhereAndHow) {
    context->evaluateScript(
        "quorvel.process = function outer() {\n  inner();\n};\nfunction inner() {\n  missing();\n}");
    EXPECT_EQ(process().text, "undefined");
    const auto exception = context->takeException();
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->text, "ReferenceError: Can't find variable: missing");
    EXPECT_EQ(exception->line, 5);
    EXPECT_NE(exception->stack.find("inner"), std::string::npos);
    EXPECT_NE(exception->stack.find("outer"), std::string::npos);
    EXPECT_FALSE(context->takeException());

    EXPECT_TRUE(context->evaluateScript("\n\nlet x = ;"));
    const auto syntaxError = context->takeException();
    ASSERT_TRUE(syntaxError);
    EXPECT_TRUE(syntaxError->text.starts_with("SyntaxError")) << syntaxError->text;
    EXPECT_EQ(syntaxError->line, 3);
}

TEST_F(QVLLinuxJavaScriptContextTest, AHostileExceptionIsTakenAsFarAsItGoes) {
    struct Row {
        const char* thrown;
        const char* text;
    };
    const std::vector<Row> rows = {
        {"null", "null"},
        {"undefined", "undefined"},
        {"Symbol('s')", "<symbol>"},
        {"{ toString() { throw 1; } }", "<object>"},
        {"{ toString: () => 'text', get line() { throw 1; }, get stack() { throw 2; } }", "text"},
        {"{ toString: () => 'text', line: { valueOf() { throw 1; } }, stack: { toString() { throw 2; } } }", "text"},
        {"{ toString: () => 'text', line: NaN, stack: 5 }", "text"},
        {"{ toString: () => 'text', line: 1e300 }", "text"},
        {"new Proxy({}, { get() { throw 1; }, getPrototypeOf() { throw 1; } })", "<object>"},
    };
    for (const Row& row : rows) {
        EXPECT_TRUE(context->evaluateScript("throw (" + std::string(row.thrown) + ")"));
        const auto exception = context->takeException();
        ASSERT_TRUE(exception) << row.thrown;
        EXPECT_EQ(exception->text, row.text) << row.thrown;
        EXPECT_EQ(exception->line, 0) << row.thrown;
        EXPECT_EQ(exception->stack, "") << row.thrown;
    }
}

TEST_F(QVLLinuxJavaScriptContextTest, EndlessRecursionIsAnExceptionAndTheMachineGoesOn) {
    EXPECT_EQ(answerOf("function again() { return again() + 1; }").text, "undefined");
    EXPECT_EQ(exceptionText(), "RangeError: Maximum call stack size exceeded.");
    EXPECT_EQ(answerOf("() => ({ toString() { return String(this); } })").text, std::nullopt);
    EXPECT_EQ(answerOf("() => 'fine'").text, "fine");
}

TEST_F(QVLLinuxJavaScriptContextTest, ANativeFunctionReadsTheTextFormsOfItsArgumentsMembers) {
    std::vector<std::optional<std::string>> seen;
    context->setFunction("quorvel", "logLevel", [&](const auto& argument) { seen.push_back(argument("level")); });
    EXPECT_TRUE(context->hasMember("quorvel", "logLevel"));
    EXPECT_TRUE(context->evaluateScript(R"(
        const log = quorvel.logLevel;
        const results = [log({ level: 'debug' }), log({ level: 5 }), log({}), log(), log(null), log('text'),
                         log({ level: null }), log({ level: Symbol() }), log({ get level() { throw 1; } }),
                         log.call(null, { level: 'called' }), log.apply(null, [{ level: 'applied' }])];
        if (typeof log !== 'function' || results.some(result => result !== undefined)) throw 'no function';
    )"));
    EXPECT_EQ(exceptionText(), "(none)");
    const auto none = std::optional<std::string>();
    EXPECT_EQ(seen, (std::vector<std::optional<std::string>>{"debug", "5", none, none, none, none, none, none, none,
                                                             "called", "applied"}));
}

TEST_F(QVLLinuxJavaScriptContextTest, ARunThatNeverEndsIsEndedFromAnotherThreadAndTheMachineGoesOn) {
    const std::vector<const char*> endless = {
        "() => { for (;;); }",
        "() => { try { for (;;); } finally { for (;;); } }",
        "() => { for (;;) { try { for (;;); } catch (e) {} } }",
        "() => /^(a+)+$/.test('a'.repeat(40) + 'b')",
        "() => [1, 2, 3].sort(() => { for (;;); })",
        "() => ({ toString() { for (;;); } })",
        "() => { throw { toString() { for (;;); } }; }",
        "() => { throw { get stack() { for (;;); } }; }",
        "() => { for (;;) quorvel.logLevel({ get level() { for (;;); } }); }",
        "() => { (async () => { for (;;); })(); }",
        "() => { (async () => { await 1; for (;;); })(); }",
        "() => { function job() { Promise.resolve().then(job); for (;;); } job(); }",
    };
    context->setFunction("quorvel", "logLevel", [](const auto& argument) { static_cast<void>(argument("level")); });
    for (const char* const function : endless) {
        mayEnd = false;
        std::thread other([this] { mayEnd = true; });
        EXPECT_TRUE(answerOf(function).isInterrupted) << function;
        other.join();
        mayEnd = false;
        EXPECT_FALSE(context->takeException()) << function;
        EXPECT_EQ(answerOf("() => 'fine'").text, "fine") << function;
    }
    mayEnd = true;
    EXPECT_FALSE(context->evaluateScript("for (;;);"));
    EXPECT_TRUE(context->evaluateScript("Object.defineProperty(quorvel, 'process', { get() { for (;;); } })"));
    EXPECT_FALSE(context->hasMember("quorvel", "process"));
    EXPECT_TRUE(process().isInterrupted);
}

TEST_F(QVLLinuxJavaScriptContextTest, ARunGoesOnForAsLongAsNobodyEndsIt) {
    int polls = 0;
    context = engine.makeContext([&] { return ++polls == 4; });
    EXPECT_FALSE(context->evaluateScript("for (;;);"));
    EXPECT_EQ(polls, 4);
    EXPECT_TRUE(context->evaluateScript("1"));
}

TEST_F(QVLLinuxJavaScriptContextTest, ARunEndedInsideANativeFunctionsGetterDoesNotReachTheGetterAgain) {
    mayEnd = true;
    std::vector<bool> wasRead;
    context->setFunction("quorvel", "logLevel", [&](const auto& argument) {
        wasRead.push_back(argument("first").has_value());
        wasRead.push_back(argument("second").has_value());
    });
    EXPECT_FALSE(context->evaluateScript(
        "quorvel.logLevel({ get first() { for (;;); }, get second() { return quorvel.hasReadSecond = true; } })"));
    EXPECT_EQ(wasRead, (std::vector{false, false}));
    EXPECT_FALSE(context->hasMember("quorvel", "hasReadSecond"));
}

TEST_F(QVLLinuxJavaScriptContextTest, SurvivesGarbageCollectionBetweenAndDuringCalls) {
    context->setFunction("quorvel", "logLevel", [](const auto& argument) { static_cast<void>(argument("level")); });
    context->evaluateScript(R"(quorvel.process = (...texts) => {
        let last;
        for (let i = 0; i < 20000; ++i) last = { text: 'x'.repeat(i % 100) + i, list: new Array(20).fill(i) };
        quorvel.logLevel({ level: last.text });
        return texts.join('');
    })");
    std::vector<std::string_view> texts(100, "abc");
    for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(process(texts).text.value_or("").size(), 300U);
    }
}

TEST_F(QVLLinuxJavaScriptContextTest, MachinesOnSeveralThreadsShareTextsAndNothingElse) {
    const auto text = engine.makeText("geteilt");
    const auto work = [&] {
        const auto own = engine.makeContext(nullptr);
        own->evaluateScript("quorvel = { count: 0, process(text) { return text + ++this.count; } }");
        std::optional<std::string> last;
        for (int round = 0; round < 100; ++round) {
            last = own->callMember("quorvel", "process", {text}).text;
        }
        return last;
    };
    auto first = std::async(std::launch::async, work);
    auto second = std::async(std::launch::async, work);
    EXPECT_EQ(first.get(), "geteilt100");
    EXPECT_EQ(second.get(), "geteilt100");
}

TEST_F(QVLLinuxJavaScriptContextTest, IsDroppedOnAnotherThreadThanItWasUsedOn) {
    context->setFunction("quorvel", "logLevel", [](const auto&) {});
    std::thread([this] { context.reset(); }).join();
    EXPECT_FALSE(context);
}

TEST(QVLLinuxJavaScriptEngine, RunsInAHostThatHasUsedTheJavaScriptLibraryItself) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            JSGlobalContextRelease(JSGlobalContextCreate(nullptr));
            QVLLinuxJavaScriptEngine engine;
            const auto context = engine.makeContext([] { return false; });
            context->evaluateScript("quorvel = { process: () => 'well' };");
            std::exit(context->callMember("quorvel", "process", {}).text == "well" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}
