#include "QVLLogMacros.h"
#include "QVLQuorvelEnvironment.h"

#include "RecordingLogger.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The lines of a text.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char character : text) {
        character == '\n' ? lines.emplace_back() : lines.back() += character;
    }
    return lines;
}

TEST(Logging, EachLevelReachesItsOperationWithWhatTheCallGave) {
    const RecordedLog log;
    const QVLNamedObject object("Object");
    QVLLog(QVLLogLevelDebug, "file", 1, "function", &object, "%@", 1);
    QVLLog(QVLLogLevelInfo, "file", 2, "function", &object, "i");
    QVLLog(QVLLogLevelWarn, "file", 3, "function", nullptr, "w");
    QVLLog(QVLLogLevelError, "file", 4, "function", &object, "e");
    const RecordingLogger::Line line = log->lines().front();
    EXPECT_EQ(line.file + std::to_string(line.number) + line.function, "file1function");
    EXPECT_EQ(line.object, &object);
    EXPECT_THAT(log->take(), ElementsAre("debug Object: 1", "info Object: i", "warn (null): w", "error Object: e"));
}

TEST(Logging, ALevelBeyondTheLastIsDroppedAndAMissingFormatIsTheEmptyMessage) {
    const RecordedLog log;
    QVLLog(7, "file", 1, "function", nullptr, "dropped");
    QVLLog(QVLLogLevelInfo, "file", 1, "function", nullptr, nullptr);
    QVLLog(QVLLogLevelInfo, "file", 1, "function", nullptr);
    EXPECT_THAT(log->take(), ElementsAre("info (null): ", "info (null): "));
}

TEST(Logging, WithoutALoggerEveryLevelGoesToStandardError) {
    const RecordedLog restoresTheLogger;
    QVLQuorvelEnvironment::sharedEnvironment()->setLogger(nullptr);
    testing::internal::CaptureStderr();
    QVLLog(QVLLogLevelDebug, "file", 1, "function", nullptr, "%@", "debug");
    QVLLog(7, "file", 1, "function", nullptr, "seven");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "function debug\nfunction seven\n");
}

TEST(Logging, AFailedAssertionIsOneErrorAndTheCallerGoesOn) {
    const RecordedLog log;
    const QVLNamedObject object("Object");
    const int one = 1;
    QVL_ASSERT(one == 2, "one == 2", &object, "%d is not %s", one, "two");
    QVLAssertDispatch(false, "false", "file", 9, "function", &object);
    QVL_ASSERT_PARAMETER(one > 1, &object);
    const std::vector<RecordingLogger::Line> lines = log->lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].level, QVLLogLevelError);
    EXPECT_EQ(lines[0].object, &object);
    const std::vector<std::string> report = linesOf(lines[0].message);
    ASSERT_GE(report.size(), 3U);
    EXPECT_EQ(report[0], "Assertion failed: one == 2");
    EXPECT_EQ(report[1], "1 is not two");
    EXPECT_FALSE(report[2].empty());
    EXPECT_EQ(linesOf(lines[1].message)[1], "");
    EXPECT_EQ(lines[1].number, 9);
    EXPECT_EQ(linesOf(lines[2].message)[1], "Invalid parameter not satisfying: one > 1");
}

TEST(Logging, AHoldingAssertionDoesNothing) {
    const RecordedLog log;
    QVL_ASSERT(true, "true", nullptr, "never");
    QVLAssertDispatch(true, "true", "file", 1, "function", nullptr);
    EXPECT_THAT(log->take(), IsEmpty());
}

TEST(Logging, ShortNamesAreFoundInTheSignaturesOfBothCompilers) {
    struct Row {
        const char* signature;
        const char* name;
    };
    const std::vector<Row> rows = {
        {"void QVLJSONStore::saveJSONObject(const QVLJSONValue&, const string&) const", "QVLJSONStore::saveJSONObject"},
        {"static std::shared_ptr<A> A::make(std::optional<B>, C)", "A::make"},
        {"QVLScript::QVLScript(int)", "QVLScript::QVLScript"},
        {"virtual A::~A()", "A::~A"},
        {"std::function<void(int)> A::later() const", "A::later"},
        {"void A::f(int)::<lambda(const auto:1&)> [with auto:1 = B]", "A::f"},
        {"auto A::f(int)::(anonymous class)::operator()(int) const", "A::f"},
        {"void Box<First, Second>::put(First) [with First = int; Second = std::pair<int, int>]",
         "Box<First, Second>::put"},
        {"void {anonymous}::f(int)", "{anonymous}::f"},
        {"void (anonymous namespace)::f(int)", "(anonymous namespace)::f"},
        {"int main()", "main"},
        {"?", "?"},
        {"", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(QVLShortFunctionName(row.signature), row.name) << row.signature;
    }
}

} // namespace
