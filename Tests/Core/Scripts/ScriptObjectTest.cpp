#include "QVLScriptObject.h"

#include "RecordingLogger.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

TEST(ScriptObject, ExposesOnlyOperationsWithItsPrefix) {
    struct Row {
        const char* selector;
        std::optional<std::string> name;
    };
    for (const Row& row : std::vector<Row>{{"js_log:", "log"},
                                           {"js_save:to:", "save"},
                                           {"js_now", "now"},
                                           {"js_", ""},
                                           {"log:", std::nullopt},
                                           {"JS_log:", std::nullopt},
                                           {"my_js_log:", std::nullopt},
                                           {"", std::nullopt}}) {
        EXPECT_EQ(QVLScriptObject::webScriptNameForSelector(row.selector), row.name) << row.selector;
        EXPECT_EQ(QVLScriptObject::isSelectorExcludedFromWebScript(row.selector), !row.name) << row.selector;
    }
}

TEST(ScriptObject, LogsInTheNameOfTheScript) {
    const RecordedLog log;
    const QVLScriptObject object;
    object.js_log("50% of %@");
    object.js_log(QVLJSONDictionary{{"a", 1}});
    const std::vector<RecordingLogger::Line> lines = log->lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].file + std::to_string(lines[0].number) + lines[0].function, "<JS>0?");
    EXPECT_EQ(lines[0].objectDescription, "<JS>");
    EXPECT_EQ(log->take(), (std::vector<std::string>{"debug <JS>: 50% of %@", "debug <JS>: {\"a\":1}"}));
}

} // namespace
