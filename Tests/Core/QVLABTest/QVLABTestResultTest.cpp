#include "QVLABTestManagerFixture.h"

namespace {

using QVLABTestResultTest = QVLABTestManagerFixture;

const std::string kParticipant = R"("participant":{"testGuid":"t"})";
const std::string kGroup = R"({"guid":"g","basic":true})";
const std::string kWin = R"("winGroup":)" + kGroup;

std::string resultText(const std::string& members) {
    return R"({"testGuid":"t",)" + members + "}";
}

} // namespace

TEST_F(QVLABTestResultTest, ChangesStateAsTheTableSays) {
    const std::vector<std::string> states = {
        R"("status":0,"lastCheckTime":7)",
        R"("status":1,"lastCheckTime":7,)" + kParticipant,
        R"("status":2,"lastCheckTime":7,)" + kParticipant + "," + kWin,
        R"("status":3,"lastCheckTime":7)",
    };
    using Event = bool (*)(QVLABTestResult&);
    struct Row {
        const char* event;
        Event apply;
        /// For each state: whether it changed, and what it then is.
        std::vector<std::string> expected;
    };
    const std::vector<Row> rows = {
        {"participant",
         [](QVLABTestResult& result) { return result.onParticipant(QVLABTestParticipant::initWithTestGuid("t", {})); },
         {"changed 1 now P-", "changed 1 now P-", "same 2 7 PW", "same 3 7 --"}},
        {"no participant",
         [](QVLABTestResult& result) { return result.onParticipant(nullptr); },
         {"changed 0 now --", "changed 0 now --", "same 2 7 PW", "same 3 7 --"}},
        {"winning group",
         [](QVLABTestResult& result) { return result.onWinGroup(QVLABTestGroup::groupWithJSON(JSONFromText(kGroup))); },
         {"changed 2 7 -W", "changed 2 7 PW", "same 2 7 PW", "same 3 7 --"}},
        {"no winning group",
         [](QVLABTestResult& result) { return result.onWinGroup(nullptr); },
         {"same 0 now --", "same 1 now P-", "same 2 7 PW", "same 3 7 --"}},
        {"invalidation",
         [](QVLABTestResult& result) { return result.invalidate(); },
         {"changed 3 now --", "changed 3 now --", "changed 3 now --", "changed 3 now --"}},
    };
    for (const Row& row : rows) {
        for (std::size_t state = 0; state < states.size(); ++state) {
            const auto result = QVLABTestResult::resultWithJSON(JSONFromText(resultText(states[state])));
            ASSERT_TRUE(result);
            const std::string changed = row.apply(*result) ? "changed " : "same ";
            EXPECT_EQ(changed + stateOf(*result), row.expected[state]) << row.event << " in state " << state;
        }
    }
}

TEST_F(QVLABTestResultTest, ReadsWhatFitsAndStartsAnewOtherwise) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {R"("status":0,"lastCheckTime":9,)" + kParticipant, "0 9 --"},
        {R"("status":1,"lastCheckTime":9,)" + kParticipant, "1 9 P-"},
        {R"("status":2,"lastCheckTime":9,)" + kWin, "2 9 -W"},
        {R"("status":2,"lastCheckTime":9.7,)" + kParticipant + "," + kWin, "2 9 PW"},
        {R"("status":3,"lastCheckTime":9,)" + kParticipant + "," + kWin, "3 9 --"},
        {R"("status":3)", "3 0 --"},
        {R"("status":true,"participant":{})", "1 0 P-"},
        {R"("status":3,"lastCheckTime":1e300)", "3 0 --"},
        {R"("status":3,"lastCheckTime":9223372036854775808)", "3 0 --"},
        {R"("status":3,"lastCheckTime":1700000001)", "3 1700000001 --"},
        // Not fitting.
        {R"("lastCheckTime":9)", "0 0 --"},
        {R"("status":"1","lastCheckTime":9,)" + kParticipant, "0 0 --"},
        {R"("status":1,"lastCheckTime":"9",)" + kParticipant, "0 0 --"},
        {R"("status":3,"lastCheckTime":null)", "0 0 --"},
        {R"("status":1,"lastCheckTime":9)", "0 0 --"},
        {R"("status":3,"lastCheckTime":9,"participant":null)", "0 0 --"},
        {R"("status":3,"lastCheckTime":9,"winGroup":"g")", "0 0 --"},
        {R"("status":2,"lastCheckTime":9,)" + kParticipant, "0 0 --"},
        {R"("status":2,"lastCheckTime":9,"winGroup":{"guid":"g"},)" + kParticipant, "0 0 --"},
        {R"("status":7,"lastCheckTime":9)", "0 0 --"},
        {R"("status":-1,"lastCheckTime":9)", "0 0 --"},
        {R"("status":-1e300,"lastCheckTime":9)", "0 0 --"},
    };
    for (const auto& [members, expected] : rows) {
        const auto result = QVLABTestResult::resultWithJSON(JSONFromText(resultText(members)));
        EXPECT_EQ(result ? stateOf(*result) : "dropped", expected) << members;
    }
    for (const char* value :
         {"{}", "[]", "null", "7", "\"t\"", R"({"testGuid":7,"status":3})", R"({"testGuid":null})"}) {
        EXPECT_FALSE(QVLABTestResult::resultWithJSON(JSONFromText(value))) << value;
    }
}
