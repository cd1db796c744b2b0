#include "Browser.h"
#include "EngineTest.h"
#include "EnvironmentForTests.h"
#include "QVLJSONSerialization.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <optional>

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// The page that an engine has made, in a real browser.
class DebugPageTest : public EngineTest {
protected:
    void SetUp() override {
        if (!Browser::isInstalled()) {
            GTEST_SKIP() << "Chromium is not installed; Scripts/install-dependencies browser installs it";
        }
        engine->setInputs({{"plan", "free"}});
        engine->start();
        settle();
        browser.emplace();
    }

    /// Loads a script file into the engine, generates the page, opens it and waits for its first run.
    void openPage(const std::string& script) {
        bool isLoaded = false;
        onQueue([&](QVLQuorvel& quorvel) { isLoaded = quorvel.loadScriptAtPath(script); });
        ASSERT_TRUE(isLoaded);
        const auto page = engine->generateDebugHTML();
        ASSERT_TRUE(page);
        browser->open(*page);
        waitForRun();
    }
    /// Writes a script that answers its texts as the outputs "inputs" and "journals".
    void openEchoPage(const std::string& script) {
        std::filesystem::create_directories(std::filesystem::path(script).parent_path());
        write(script, scriptWithBody("answer.inputs = inputs; answer.journals = journals; "
                                     "return JSON.stringify(answer);"));
        openPage(script);
    }
    static void write(const std::string& path, const std::string& content) { std::ofstream(path) << content; }
    void waitForRun() const {
        browser->waitUntil("!document.getElementById('status').textContent.startsWith('Loading')");
    }

    [[nodiscard]] std::string text(const std::string& id) const {
        return *browser->run("return document.getElementById(arguments[0]).textContent", {id}).qvl_castToStringValue();
    }
    /// The answer that the page shows as text.
    [[nodiscard]] QVLJSONValue answer() const { return QVLJSONSerialization::JSONObjectWithData(text("raw")).value; }
    [[nodiscard]] std::string markOf(const std::string& output) const {
        const QVLJSONValue mark = browser->run(
            "return document.querySelector(`#outputs li[data-name='${arguments[0]}']`)?.dataset.mark", {output});
        return mark.qvl_castToStringValue().value_or("no such output");
    }
    void type(const std::string& editor, const std::string& content) const {
        browser->run("const area = document.getElementById(arguments[0]); area.focus(); area.value = arguments[1];"
                     "area.dispatchEvent(new InputEvent('input', { bubbles: true }));",
                     {editor, content});
    }
    void click(const std::string& button) const {
        browser->run("document.getElementById(arguments[0]).click()", {button});
    }

    EnvironmentForTests environment{directory.path()};
    const std::string scriptPath = directory.path("rules.js");
    std::optional<Browser> browser;
};

TEST_F(DebugPageTest, ItsAnswerIsTheEnginesOwn) {
    const QVLJSONStore& store = *QVLJSONStore::sharedStore();
    engine->journals()->loadFromJSONObject(store.loadJSONFromFileAtPath(QVL_TEST_SAMPLE_DATA "/journals.json"));
    engine->setInputs(store.loadJSONFromFileAtPath(QVL_TEST_SAMPLE_DATA "/inputs.json").dictionaryOrEmpty());
    openPage(environment->bundleScriptFilePath().value());
    std::optional<QVLJSONDictionary> own;
    onQueue([&](QVLQuorvel& quorvel) { own = quorvel.processScriptIfPossible(); });
    ASSERT_TRUE(own);
    EXPECT_EQ(answer(), QVLJSONValue(*own));
    EXPECT_EQ(text("version"), own->valueForKey(kQVLScriptVersionKey).qvl_castToStringValue());
    EXPECT_THAT(text("outputs"), HasSubstr("\"low\"")) << "values";
    EXPECT_THAT(text("outputs"), HasSubstr("enough sessions and not asked lately")) << "reasons";
    EXPECT_THAT(text("notes"), IsEmpty());
}

TEST_F(DebugPageTest, AnEditRunsAgainMarksWhatChangedAndLastsUntilItIsReset) {
    write(scriptPath, scriptWithBody("return JSON.stringify(Object.assign(answer, inputs));"));
    engine->setInputs({{"kept", 1}, {"changed", "old"}, {"removed", true}});
    openPage(scriptPath);
    EXPECT_EQ(markOf("changed"), "") << "nothing to compare with";

    const std::string edited = R"({"kept": 1.0, "changed": "new", "added": [], "removed%": 0})";
    type("inputs", edited);
    browser->pressControlEnter();
    EXPECT_THAT(text("status"), testing::ContainsRegex("Ran in .* ms\\. 4 outputs: 1 changed, 2 added, 1 removed"));
    EXPECT_EQ(markOf("kept"), "");
    EXPECT_EQ(markOf("changed"), "changed");
    EXPECT_EQ(markOf("added"), "added");
    EXPECT_EQ(markOf("removed"), "removed");
    EXPECT_THAT(text("outputs"), HasSubstr("was \"old\""));

    browser->refresh();
    waitForRun();
    EXPECT_EQ(browser->run("return document.getElementById('inputs').value"), QVLJSONValue(edited));
    EXPECT_THAT(text("outputs"), HasSubstr("\"new\""));

    write(scriptPath, scriptWithBody("answer.second = true; return JSON.stringify(answer);", "2.0"));
    click("reload");
    browser->waitUntil("document.getElementById('version').textContent === '2.0'");
    EXPECT_EQ(markOf("second"), "added");

    click("resetInputs");
    EXPECT_THAT(browser->run("return document.getElementById('inputs').value").description(), HasSubstr("\"old\""));
}

TEST_F(DebugPageTest, InvalidJSONIsPointedOutAndNotRun) {
    openEchoPage(scriptPath);
    struct Case {
        const char* text;
        const char* problem;
    };
    const Case cases[] = {
        {"{\n  \"a\": 1,\n}", "Line 3, column 1: expected a name in double quotes, found }"},
        {"{\"a\" 1}", "Line 1, column 6: expected a colon, found 1"},
        {"{\"a\": [1 2]}", "Line 1, column 10: expected a comma or the closing bracket, found 2"},
        {"{\"a\": 01}", "Line 1, column 7: expected a value, found something that is not JSON"},
        {"{\"a\": \"\t\"}", "Line 1, column 7: expected a value, found an unfinished text or a bad escape"},
        {"{\"a\": [}", "Line 1, column 8: expected a value or ], found }"},
        {"{} {}", "Line 1, column 4: expected the end of the text, found {"},
        {"{\"a\": 1", "Line 1, column 8: the text ends where a comma or the closing bracket should follow"},
        {"[1]", "This must be an object: { … }"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.text);
        type("journals", row.text);
        click("run");
        EXPECT_EQ(text("journalsProblem"), row.problem);
        EXPECT_THAT(text("status"), StartsWith("Not run"));
    }
    click("resetJournals");
    EXPECT_THAT(text("journalsProblem"), IsEmpty());
    EXPECT_THAT(text("status"), StartsWith("Ran"));
}

TEST_F(DebugPageTest, ItTellsWhatTheEngineWouldRefuse) {
    write(scriptPath, scriptWithBody("return JSON.stringify(answer);"));
    openPage(scriptPath);
    struct Case {
        const char* what;
        std::string script;
        std::vector<const char*> told;
    };
    const std::string process = "quorvel.process = () => ";
    const Case cases[] = {
        {"an exception",
         scriptWithBody("function rule() { throw new TypeError('no plan'); }\nrule();"),
         {"process threw TypeError: no plan", "at rule", "rules.js:"}},
        {"a thrown text", process + "{ throw 'why'; };", {"process threw why"}},
        {"an exception while loading", "throw new Error('early');", {"leaves no quorvel.process", "threw while"}},
        {"a syntax error", "quorvel.process = (", {"leaves no quorvel.process", "F12"}},
        {"an object", process + "({ a: 1 });", {"not JSON", "returned an object", "JSON.stringify"}},
        {"nothing", process + "{};", {"returned nothing"}},
        {"an array's text", process + "'[1]';", {"no object", "[1]"}},
        {"half a character", process + R"('{"a": "\\ud83d"}';)", {"half of a character"}},
        {"a symbol", process + "Symbol('s');", {"process threw TypeError"}},
        {"an error", process + "'{\"%error\": \"no inputs\"}';", {"%error: no inputs", "uses no outputs"}},
        {"too old a host",
         process + "'{\"%isCurrentAppSupported\": false}';",
         {"%isCurrentAppSupported is false", "%usedInputs is no array"}},
        {"a failed rule",
         scriptWithBody("answer['%failureAreas'] = ['tour']; answer.ruleReasons = {tour: 'failed: x'};"
                        "return JSON.stringify(answer);"),
         {"1 rule failed", "tour: failed: x"}},
        {"missing inputs",
         scriptWithBody("answer['%usedInputs'] = ['plan', 'mood', 5]; console.log('hello');"
                        "return JSON.stringify(answer);"),
         {"inputs that are not set", "mood", "more than names"}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.what);
        write(scriptPath, row.script);
        click("reload");
        waitForRun();
        for (const char* told : row.told) {
            EXPECT_THAT(text("notes"), HasSubstr(told));
        }
    }
    EXPECT_EQ(text("console"), "log: hello\n");
    std::filesystem::remove(scriptPath);
    click("reload");
    waitForRun();
    EXPECT_THAT(text("notes"), HasSubstr("no script file at this path"));
}

TEST_F(DebugPageTest, HostileTextsAndPathsComeThroughUnharmed) {
    engine->journals()->eventForKey("</plaintext><!--<script>%script_path%%inputs_json%")->trigger();
    engine->setInputs({{"elements", "</script></style></textarea></plaintext><img src=x onerror='document.title=1'>"},
                       {"comments", "<!--<script>--> ]]> &amp; &#0; <!["},
                       {"placeholders", "%journals_json% %script_path% %inputs_json% $& $1 %journals_json%"},
                       {"separators", "\u2028\u2029\u0085\uFEFF\n\r\t\"'\\ \u00e9\U0001F600"},
                       {"escapes", "\\ud800 \\\\udfff \\u0000"},
                       {"nul", std::string("\0", 1)},
                       {"__proto__", QVLJSONDictionary{{"a", 1}}}});
    settle();
    // The directories' names would end elements, begin comments, or be read as parts of a URL or as placeholders.
    openEchoPage(directory.path("a b#c?d%41\"'&amp;\u00e9 <!--<script>%inputs_json% %journals_json%/<"
                                "/plaintext><img src=x>.js"));
    const QVLJSONDictionary echo = answer().dictionaryOrEmpty();
    EXPECT_EQ(echo.valueForKey("inputs"), QVLJSONValue(engine->inputs()));
    EXPECT_EQ(echo.valueForKey("journals"), engine->journals()->qvl_JSONObject());
    EXPECT_EQ(text("path"), engine->loadedScriptPath());
    EXPECT_EQ(browser->run("return document.images.length"), QVLJSONValue(0));
    EXPECT_EQ(browser->run("return JSON.parse(document.getElementById('inputs').value).separators"),
              engine->inputs().valueForKey("separators"));
}

/// The texts whose contrast with what lies behind them is below the given ratio.
constexpr const char* kFaintTexts = R"(
    const channels = (color) => color.match(/[\d.]+/g).map(Number);
    const luminance = (color) => channels(color).slice(0, 3)
        .map((c) => c / 255).map((c) => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
        .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
    const behind = (e) => (channels(getComputedStyle(e).backgroundColor)[3] ?? 1) > 0 || !e.parentElement
        ? getComputedStyle(e).backgroundColor : behind(e.parentElement);
    const ratio = (a, b) => (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    return [...document.querySelectorAll('header *, main *')]
        .filter((e) => e.checkVisibility() && !e.disabled &&
                       (e.matches('textarea') || [...e.childNodes].some((n) => n.nodeType === 3 && n.data.trim())))
        .map((e) => [ratio(luminance(getComputedStyle(e).color), luminance(behind(e))), e])
        .filter(([contrast]) => contrast < arguments[0])
        .map(([contrast, e]) => `${e.tagName}.${e.className} ${e.textContent.slice(0, 20)} ${contrast.toFixed(2)}`);
)";

TEST_F(DebugPageTest, EveryTextIsReadableInLightAndDarkAndInANarrowWindow) {
    write(scriptPath,
          scriptWithBody("answer['%usedInputs'] = ['mood', 'count'];"
                         "answer['%failureAreas'] = ['tour']; if ('new' in inputs) answer['%error'] = 'x';"
                         "return JSON.stringify(Object.assign(answer, inputs, { reasons: { n: 'why' } }));"));
    engine->setInputs({{"n", 1}, {"old", "x"}, {"gone", true}, {"list", QVLJSONArray{1}}});
    openPage(scriptPath);
    type("journals", "{");
    type("inputs", R"({"n": 2, "old": "x", "new": null, "list": [2], "count": 1})");
    click("resetJournals");
    std::string backgrounds;
    for (const char* scheme : {"light", "dark"}) {
        browser->setColorScheme(scheme);
        EXPECT_EQ(browser->run(kFaintTexts, {4.5}).description(), "[]") << scheme;
        const auto background = browser->run("return getComputedStyle(document.body).backgroundColor");
        EXPECT_NE(background.qvl_castToStringValue(), backgrounds) << "both schemes look alike";
        backgrounds = *background.qvl_castToStringValue();
    }
    browser->setWidth(360);
    EXPECT_EQ(browser->run("return document.documentElement.scrollWidth <= window.innerWidth"), QVLJSONValue(true));
}

} // namespace
