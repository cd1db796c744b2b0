#include "QVLABTestManagerFixture.h"
#include "QVLQuorvel.h"

#include <gmock/gmock.h>

// What an engine makes of its manager's results.

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

using QVLABTestOutputsTest = QVLABTestManagerFixture;

} // namespace

TEST_F(QVLABTestOutputsTest, AreThereAtOnceFromTheCacheAndFollowTheReplies) {
    const std::string kOddGuid = R"(q"%@)";
    environment->setAbtestGuids({"", "decided", "groupless", kOddGuid});
    writeCache(R"({
        "": {"testGuid": "", "status": 1, "participant": {"testGuid": "", "group": {"guid": "first", "basic": 1}}},
        "decided": {"testGuid": "decided", "status": 2,
            "participant": {"testGuid": "decided", "group": {"guid": "own", "basic": 1}},
            "winGroup": {"guid": "winner", "basic": 0, "attributeValues": {"colors": ["red", null]}}},
        "groupless": {"testGuid": "groupless", "status": 1, "participant": {"testGuid": "groupless"}},
        "q\"%@": {"testGuid": "q\"%@", "status": 1, "participant": {"testGuid": "q\"%@",
            "group": {"guid": "%@", "basic": 1, "attributeValues": {}}}}})");
    makeManager();
    const auto engine = QVLQuorvel::initWithDirectory(directory.path(), nullptr, manager);
    EXPECT_EQ(QVLJSONValue(engine->outputs()), JSONFromText(R"({
        "mac.abtest..group": "first",
        "mac.abtest.decided.group": "winner",
        "mac.abtest.decided.attributeValues": {"colors": ["red", null]},
        "mac.abtest.q\"%@.group": "%@",
        "mac.abtest.q\"%@.attributeValues": {}})"));

    std::vector<std::vector<std::string>> changes;
    const QVLToken observation = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLOutputsDidChangeNotification, engine, [&](const QVLNotification& notification) {
            changes.push_back(*notification.value<std::vector<std::string>>(kQVLChangedOutputKeys));
        });
    networkChanges();
    ASSERT_EQ(asked(), (Guids{"", "groupless", kOddGuid}));
    answer(0, 200, R"({"data": {"testGuid": "", "status": 2, "group": {"guid": "second", "basic": 1}}})");
    answer(1, 200, R"({"data": {"testGuid": "groupless", "status": 1,
                                "group": {"guid": "g", "basic": 0, "attributeValues": {"a": 1}}}})");
    answer(2, 200, R"({"code": 68604, "data": {"testGuid": "q\"%@", "group": {"guid": "%@", "basic": 1}}})");
    EXPECT_THAT(changes,
                ElementsAre(ElementsAre("mac.abtest..group"),
                            UnorderedElementsAre("mac.abtest.groupless.group", "mac.abtest.groupless.attributeValues"),
                            UnorderedElementsAre("mac.abtest.q\"%@.group", "mac.abtest.q\"%@.attributeValues")));
    EXPECT_EQ(QVLJSONValue(engine->outputs()), JSONFromText(R"({
        "mac.abtest..group": "second",
        "mac.abtest.decided.group": "winner",
        "mac.abtest.decided.attributeValues": {"colors": ["red", null]},
        "mac.abtest.groupless.group": "g",
        "mac.abtest.groupless.attributeValues": {"a": 1}})"));
}
