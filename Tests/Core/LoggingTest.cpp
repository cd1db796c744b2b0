#include "QVLLogMacros.h"
#include "QVLQuorvelEnvironment.h"

#include "RecordingLogger.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Chatter final : public QVLObject {
public:
    void talk() const { QVL_LOG_DEBUG(this, "a"); }
    [[nodiscard]] std::function<void(int)> later() const {
        QVL_LOG_DEBUG(this, "b");
        return [this](int) { QVL_LOG_DEBUG(this, "c"); };
    }
    template <class First, class Second>
    void talkAbout(First /*first*/, Second /*second*/) const {
        QVL_LOG_DEBUG(this, "d");
    }
    static void talkToAll() { QVL_LOG_DEBUG(nullptr, "e"); }
    [[nodiscard]] std::string className() const override { return "Chatter"; }
};

std::vector<std::string> functionsOf(const RecordedLog& log) {
    std::vector<std::string> functions;
    for (const RecordingLogger::Line& line : log->lines()) {
        functions.push_back(line.function);
    }
    return functions;
}

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
    EXPECT_EQ(line.file, "file");
    EXPECT_EQ(line.number, 1);
    EXPECT_EQ(line.function, "function");
    EXPECT_EQ(line.object, &object);
    EXPECT_EQ(line.objectDescription, "Object");
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

TEST(Logging, LinesNameTheFunctionWithItsClassOnly) {
    const RecordedLog log;
    const Chatter chatter;
    chatter.talk();
    chatter.later()(1);
    chatter.talkAbout(std::function<void(int)>(), 2);
    Chatter::talkToAll();
    const std::vector<std::string> functions = functionsOf(log);
    ASSERT_EQ(functions.size(), 5U);
    for (const auto& [index, name] : std::vector<std::pair<std::size_t, std::string>>{
             {0, "talk"}, {1, "later"}, {2, "later"}, {3, "talkAbout"}, {4, "talkToAll"}}) {
        EXPECT_THAT(functions[index], testing::EndsWith("Chatter::" + name));
    }
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
