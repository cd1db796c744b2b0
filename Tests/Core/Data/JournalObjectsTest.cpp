#include "QVLJournalCollection.h"
#include "QVLJournalEvent.h"
#include "QVLJournalFlag.h"

#include "QVLDateFormatter.h"
#include "RecordingLogger.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kMorning = "2021-03-04T05:06:07Z";
constexpr const char* kNoon = "2021-03-04T12:00:00Z";

QVLDate dateOf(const char* text) {
    return QVLDateFormatter::sharedFormatter().dateFromString(text).value();
}

class ChangeCounter final : public QVLJournalCollectionDelegate {
public:
    void collection(QVLPropertyCollection& /*collection*/, const std::vector<std::string>& /*objects*/) override {
        ++m_count;
    }
    /// The reports since the last call.
    int take() { return std::exchange(m_count, 0); }

private:
    int m_count = 0;
};

class JournalObjects : public testing::Test {
protected:
    JournalObjects() {
        m_platform.install();
        m_platform.runLoop->setNow(dateOf(kMorning));
        m_collection->setDelegate(m_changes);
    }

    /// Puts a record into a collection that tells of its changes.
    template <class Record>
    std::shared_ptr<Record> inCollection(const std::shared_ptr<Record>& record) {
        m_collection->setCollection({{"key", QVLJSONValue::record(record)}});
        m_changes->take();
        return record;
    }

    static constexpr QVLRecordClass kAnyJournalClass = {"QVLJournalObject", nullptr, nullptr, /*isJournalClass=*/true};

    TestPlatform m_platform;
    const std::shared_ptr<ChangeCounter> m_changes = std::make_shared<ChangeCounter>();
    const std::shared_ptr<QVLJournalCollection> m_collection =
        QVLJournalCollection::initWithJournalClass(kAnyJournalClass);
    RecordedLog m_log;
};

TEST_F(JournalObjects, AnEventCountsAndRemembersItsFirstAndLastTime) {
    const auto event = inCollection(QVLJournalEvent::init());
    event->trigger();
    m_platform.runLoop->advance(std::chrono::hours(1));
    event->trigger();
    m_platform.runLoop->setNow(dateOf(kNoon) + std::chrono::milliseconds(900));
    event->trigger();
    const auto copy = std::dynamic_pointer_cast<QVLJournalEvent>(event->copy());
    EXPECT_TRUE(copy->isEqual(*event));
    EXPECT_EQ(copy->collection(), m_collection);
    EXPECT_EQ(event->qvl_JSONObject(),
              QVLJSONValue(QVLJSONDictionary{{"firstTime", kMorning}, {"lastTime", kNoon}, {"count", 3}}));
    EXPECT_EQ(m_changes->take(), 3);
    event->reset();
    EXPECT_TRUE(event->isEmpty());
    EXPECT_EQ(m_changes->take(), 1);
}

TEST_F(JournalObjects, AFlagRemembersWhenItWasSetAndReportsEverySetting) {
    const auto flag = inCollection(QVLJournalFlag::init());
    flag->updateFlag(false);
    EXPECT_FALSE(flag->isEmpty());
    EXPECT_EQ(flag->qvl_JSONObject(), QVLJSONValue(QVLJSONDictionary{{"lastTime", kMorning}}));
    m_platform.runLoop->setNow(dateOf(kNoon));
    flag->updateFlag(false);
    EXPECT_EQ(flag->lastTime(), dateOf(kNoon));
    flag->updateFlag(true);
    EXPECT_EQ(flag->qvl_JSONObject(), QVLJSONValue(QVLJSONDictionary{{"lastTime", kNoon}, {"flag", true}}));
    EXPECT_EQ(m_changes->take(), 3);
    flag->reset();
    EXPECT_TRUE(flag->isEmpty());
    EXPECT_EQ(m_changes->take(), 1);
}

TEST_F(JournalObjects, SettersReportOnlyWhatDiffers) {
    const auto event = inCollection(QVLJournalEvent::init());
    for (int round = 0; round < 2; ++round) {
        event->setFirstTime(dateOf(kMorning));
        event->setLastTime(dateOf(kNoon));
        event->setCount(2);
        EXPECT_EQ(m_changes->take(), round == 0 ? 3 : 0);
    }
    event->setFirstTime(std::nullopt);
    EXPECT_EQ(m_changes->take(), 1);
    const auto flag = inCollection(QVLJournalFlag::init());
    for (int round = 0; round < 2; ++round) {
        flag->setFlag(true);
        flag->setLastTime(dateOf(kNoon));
        EXPECT_EQ(m_changes->take(), round == 0 ? 2 : 0);
    }
    event->trigger(); // No longer in the collection.
    EXPECT_EQ(m_changes->take(), 0);
}

TEST_F(JournalObjects, DecodingKeepsWhatFitsAndNeverFails) {
    struct Row {
        QVLJSONValue object;
        QVLJSONDictionary event;
        QVLJSONDictionary flag;
    };
    constexpr auto kLargest = std::numeric_limits<std::uint64_t>::max();
    const std::vector<Row> rows = {
        {QVLJSONDictionary{}, {}, {}},
        {QVLJSONDictionary{{"count", 4}, {"flag", true}}, {{"count", 4}}, {{"flag", true}}},
        {QVLJSONDictionary{{"count", "4"}, {"flag", "true"}}, {}, {}},
        {QVLJSONDictionary{{"count", 2.9}, {"flag", 2.9}}, {{"count", 2}}, {{"flag", true}}},
        {QVLJSONDictionary{{"count", true}, {"flag", 0}}, {{"count", 1}}, {}},
        {QVLJSONDictionary{{"count", -1}, {"flag", -1}}, {{"count", kLargest}}, {{"flag", true}}},
        {QVLJSONDictionary{{"count", kLargest}}, {{"count", kLargest}}, {}},
        {QVLJSONDictionary{{"count", nullptr}, {"flag", nullptr}, {"lastTime", nullptr}}, {}, {}},
        {QVLJSONDictionary{{"firstTime", "2021-03-04T13:00:00+01:00"}, {"lastTime", kMorning}, {"more", 1}},
         {{"firstTime", kNoon}, {"lastTime", kMorning}},
         {{"lastTime", kMorning}}},
        {QVLJSONDictionary{{"firstTime", "yesterday"}, {"lastTime", 1614834367}}, {}, {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(QVLJournalEvent::initWithQVLJSONObject(row.object)->qvl_JSONObject(), QVLJSONValue(row.event))
            << row.object.description();
        EXPECT_EQ(QVLJournalFlag::initWithQVLJSONObject(row.object)->qvl_JSONObject(), QVLJSONValue(row.flag))
            << row.object.description();
    }
    // Equal to what a record gives, but written differently; the comparisons above cannot tell.
    EXPECT_EQ(
        QVLJournalEvent::initWithQVLJSONObject(QVLJSONDictionary{{"count", true}})->qvl_JSONObject().description(),
        R"({"count":1})");
    EXPECT_EQ(QVLJournalFlag::initWithQVLJSONObject(QVLJSONDictionary{{"flag", 1}})->qvl_JSONObject().description(),
              R"({"flag":true})");
    EXPECT_THAT(m_log->take(), IsEmpty());
    EXPECT_TRUE(QVLJournalEvent::initWithQVLJSONObject("text")->isEmpty());
    EXPECT_TRUE(QVLJournalFlag::initWithQVLJSONObject(nullptr)->isEmpty());
    EXPECT_THAT(m_log->take(), ElementsAre("error QVLJournalEvent: Could not load event from JSON: text",
                                           "error QVLJournalFlag: Could not load flag from JSON: <null>"));
}

TEST_F(JournalObjects, EqualsRecordsOfItsClassWithTheSameFields) {
    // All of them differ from each other.
    std::vector<std::shared_ptr<QVLJournalObject>> records;
    for (const QVLJSONDictionary& event : std::vector<QVLJSONDictionary>{
             {}, {{"count", 1}}, {{"firstTime", kMorning}}, {{"lastTime", kMorning}}, {{"lastTime", kNoon}}}) {
        records.push_back(QVLJournalEvent::initWithQVLJSONObject(event));
    }
    for (const QVLJSONDictionary& flag :
         std::vector<QVLJSONDictionary>{{}, {{"flag", true}}, {{"lastTime", kMorning}}, {{"lastTime", kNoon}}}) {
        records.push_back(QVLJournalFlag::initWithQVLJSONObject(flag));
    }
    for (const auto& left : records) {
        for (const auto& right : records) {
            const auto copy = right->copy();
            EXPECT_EQ(left->isEqual(*copy), left == right) << left->description() << " and " << copy->description();
            EXPECT_TRUE(left != right || left->hash() == copy->hash());
        }
    }
    EXPECT_THAT(records[1]->description(), testing::MatchesRegex("<QVLJournalEvent: 0x[0-9a-f]+> \\{\"count\":1\\}"));
    EXPECT_EQ(records[0]->hash(), 0U);
}

} // namespace
