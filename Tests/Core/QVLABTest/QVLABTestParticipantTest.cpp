#include "QVLABTestManagerFixture.h"

namespace {

std::string text(const QVLJSONDictionary& JSON) {
    return QVLJSONSerialization::dataWithJSONObject(JSON).text;
}

QVLJSONDictionary nested(std::size_t depth) {
    QVLJSONDictionary result;
    while (result.depth() < depth) {
        result = {{"in", result}};
    }
    return result;
}

} // namespace

TEST(QVLABTestGroupTest, ReadsOnlyWhatIsCompleteAndWritesItBack) {
    // The second column is what is written again; empty for a value that is no group.
    const std::vector<std::pair<std::string, std::string>> rows = {
        {R"({"guid":"g","basic":true})", R"({"basic":true,"guid":"g"})"},
        {R"({"guid":"","basic":0,"attributeValues":{}})", R"({"attributeValues":{},"basic":false,"guid":""})"},
        {R"({"guid":"g","basic":0.5,"attributeValues":{"a":[1,null]},"more":1})",
         R"({"attributeValues":{"a":[1,null]},"basic":true,"guid":"g"})"},
        {R"({"guid":"g"})", ""},
        {R"({"basic":true})", ""},
        {R"({"guid":"g","basic":null})", ""},
        {R"({"guid":"g","basic":"true"})", ""},
        {R"({"guid":7,"basic":true})", ""},
        {R"({"guid":"g","basic":true,"attributeValues":null})", ""},
        {R"({"guid":"g","basic":true,"attributeValues":[]})", ""},
        {"[]", ""},
        {"null", ""},
    };
    for (const auto& [given, expected] : rows) {
        const auto group = QVLABTestGroup::groupWithJSON(JSONFromText(given));
        EXPECT_EQ(group ? text(group->toJSON()) : "", expected) << given;
    }
}

TEST(QVLABTestGroupTest, TakesAttributesJustAsDeepAsTheCacheFileCanHold) {
    const auto read = [](std::size_t depth) {
        return QVLABTestGroup::groupWithJSON(
            QVLJSONDictionary{{"guid", "g"}, {"basic", true}, {"attributeValues", nested(depth)}});
    };
    EXPECT_FALSE(read(QVLABTestGroup::kMaximumAttributeDepth + 1));

    const auto group = read(QVLABTestGroup::kMaximumAttributeDepth);
    ASSERT_TRUE(group);
    EXPECT_EQ(
        QVLJSONDictionary({{"file", QVLJSONDictionary{{"result", QVLJSONDictionary{{"p", group->toJSON()}}}}}}).depth(),
        QVLJSONValue::kMaximumDepth);
    group->setAttributeValues(nested(QVLABTestGroup::kMaximumAttributeDepth + 1));
    EXPECT_FALSE(group->attributeValues());
}

TEST(QVLABTestParticipantTest, TakesEachFittingMemberAndSkipsTheOthersOneByOne) {
    const std::string empty = R"({"frequency":2,"status":0,"testGuid":"t"})";
    // What the service sent, and what is written of it.
    const std::vector<std::pair<std::string, std::string>> rows = {
        {R"({"testGuid":"t","status":1,"frequency":3,"startTime":"s","endTime":"","group":{"guid":"g","basic":1}})",
         R"({"endTime":"","frequency":3,"group":{"basic":true,"guid":"g"},"startTime":"s","status":1,"testGuid":"t"})"},
        {"[]", empty},
        {R"({"status":2,"frequency":1})", empty},
        {R"({"testGuid":"T","status":2,"frequency":1,"group":{"guid":"g","basic":1}})", empty},
        {R"({"testGuid":["t"],"status":2})", empty},
        {R"({"testGuid":"t","status":"2","frequency":null,"startTime":5,"endTime":[],"group":"g"})", empty},
        {R"({"testGuid":"t","status":{},"frequency":[],"group":{"guid":"g"}})", empty},
        {R"({"testGuid":"t","status":2.9,"frequency":1e300})",
         R"({"frequency":18446744073709551615,"status":2,"testGuid":"t"})"},
        {R"({"testGuid":"t","status":-1,"frequency":true})",
         R"({"frequency":1,"status":18446744073709551615,"testGuid":"t"})"},
        {R"({"testGuid":"t","frequency":0})", R"({"status":0,"testGuid":"t"})"},
    };
    for (const auto& [given, expected] : rows) {
        EXPECT_EQ(text(QVLABTestParticipant::initWithTestGuid("t", JSONFromText(given))->toJSON()), expected) << given;
    }
}
