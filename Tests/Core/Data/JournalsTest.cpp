#include "QVLJournals.h"

#include "QVLDateFormatter.h"
#include "QVLOutput.h"
#include "RecordingLogger.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr const char* kMorning = "2021-03-04T05:06:07Z";
constexpr const char* kNoon = "2021-03-04T12:00:00Z";

QVLDate dateOf(const char* text) {
    return QVLDateFormatter::sharedFormatter().dateFromString(text).value();
}

QVLJSONValue fileOf(const QVLJSONDictionary& events, const QVLJSONDictionary& flags) {
    return QVLJSONDictionary{{"__version__", 1}, {"events", events}, {"flags", flags}};
}

class ChangeCounter final : public QVLJournalsDelegate {
public:
    void journalsDidChange(QVLJournals& journals) override {
        ++m_count;
        if (whenTold) {
            whenTold(journals);
        }
    }
    /// The reports since the last call.
    int take() { return std::exchange(m_count, 0); }

    std::function<void(QVLJournals&)> whenTold;

private:
    int m_count = 0;
};

class Journals : public testing::Test {
protected:
    Journals() {
        m_platform.install();
        m_platform.runLoop->setNow(dateOf(kNoon));
        m_journals->setDelegate(m_changes);
    }
    [[nodiscard]] std::uint64_t countOf(const std::string& key) const { return m_journals->eventForKey(key)->count(); }

    TestPlatform m_platform;
    RecordedLog m_log;
    const std::shared_ptr<ChangeCounter> m_changes = std::make_shared<ChangeCounter>();
    std::shared_ptr<QVLJournals> m_journals = QVLJournals::initWithQVLJSONObject(QVLJSONDictionary{});
};

TEST_F(Journals, TheFileFormHoldsEveryRecordThatIsNotEmpty) {
    EXPECT_EQ(m_journals->qvl_JSONObject(), fileOf({}, {}));
    m_journals->eventForKey("empty")->reset();
    m_journals->eventForKey("e")->trigger();
    m_journals->flagForKey("f")->updateFlag(true);
    const QVLJSONValue file =
        fileOf({{"e", QVLJSONDictionary{{"firstTime", kNoon}, {"lastTime", kNoon}, {"count", 1}}}},
               {{"f", QVLJSONDictionary{{"flag", true}, {"lastTime", kNoon}}}});
    EXPECT_EQ(m_journals->qvl_JSONObject(), file);
    EXPECT_EQ(m_journals->publishedJSONObject(), file);
    const auto loaded = QVLJournals::initWithQVLJSONObject(file);
    EXPECT_EQ(loaded->qvl_JSONObject(), file);
    EXPECT_EQ(loaded->publishedJSONObject(), file);
    EXPECT_THAT(m_log->take(), IsEmpty());
}

TEST_F(Journals, OnlyVersionOneIsLoaded) {
    struct Row {
        QVLJSONValue version;
        bool isLoaded;
    };
    const QVLJSONDictionary events{{"e", QVLJSONDictionary{{"count", 1}}}};
    for (const Row& row : std::vector<Row>{{1, true},
                                           {1.5, true},
                                           {true, true},
                                           {2, false},
                                           {0, false},
                                           {-1, false},
                                           {"1", false},
                                           {nullptr, false},
                                           {QVLJSONArray{1}, false}}) {
        const QVLJSONDictionary object{{"__version__", row.version}, {"events", events}};
        EXPECT_EQ(m_journals->loadFromJSONObject(object), row.isLoaded) << row.version.description();
        EXPECT_THAT(m_journals->allEventKeys(), testing::SizeIs(row.isLoaded ? 1 : 0)) << row.version.description();
        if (row.isLoaded) {
            EXPECT_THAT(m_log->take(), IsEmpty());
        } else {
            EXPECT_THAT(m_log->take(), ElementsAre("error QVLJournals: Could not load journals form JSONObject: (" +
                                                   object.description() + ")"));
        }
        m_journals->reset();
    }
    EXPECT_FALSE(m_journals->loadFromJSONObject("text"));
    EXPECT_FALSE(m_journals->loadFromJSONObject({}));
    EXPECT_THAT(m_log->take(),
                ElementsAre("error QVLJournals: Bad JSONObject: text", "error QVLJournals: Bad JSONObject: (null)"));
}

TEST_F(Journals, AMalformedFileThrowsButMalformedRecordsAreEmpty) {
    const auto load = [](const QVLJSONValue& object) { static_cast<void>(QVLJournals::initWithQVLJSONObject(object)); };
    EXPECT_THROW(load(QVLJSONDictionary{{"__version__", 1}, {"events", QVLJSONArray{}}}), std::invalid_argument);
    EXPECT_THROW(load(QVLJSONDictionary{{"__version__", 1}, {"flags", nullptr}}), std::invalid_argument);
    m_journals->loadFromJSONObject(fileOf({{"bad", 5}}, {}));
    EXPECT_TRUE(m_journals->eventForKey("bad")->isEmpty());
    EXPECT_THAT(m_log->take(), ElementsAre("error QVLJournalEvent: Could not load event from JSON: 5"));
}

TEST_F(Journals, TheOlderFormIsMigrated) {
    const QVLJSONDictionary older{
        {"both", QVLJSONDictionary{{"lastTimeShown", kMorning}, {"shownCount", 3}, {"optedOut", true}}},
        {"unfinished", QVLJSONDictionary{{"lastTimeShown", kMorning}}},
        {"no date", QVLJSONDictionary{{"lastTimeShown", "never"}, {"shownCount", -1}}},
        {"not opted out", QVLJSONDictionary{{"optedOut", false}}},
        {"nothing", QVLJSONDictionary{}},
    };
    EXPECT_TRUE(m_journals->loadFromJSONObject(older));
    EXPECT_EQ(m_journals->qvl_JSONObject(),
              fileOf({{"both", QVLJSONDictionary{{"firstTime", kMorning}, {"lastTime", kMorning}, {"count", 3}}},
                      {"no date", QVLJSONDictionary{{"count", std::numeric_limits<std::uint64_t>::max()}}}},
                     {{"both", QVLJSONDictionary{{"flag", true}, {"lastTime", kNoon}}},
                      {"not opted out", QVLJSONDictionary{{"lastTime", kNoon}}}}));
    EXPECT_THAT(m_journals->allEventKeys(), UnorderedElementsAre("both", "no date"));

    for (const QVLJSONValue& entry :
         {QVLJSONValue(5), QVLJSONValue(QVLJSONDictionary{{"lastTimeShown", 5}, {"shownCount", 1}}),
          QVLJSONValue(QVLJSONDictionary{{"lastTimeShown", kMorning}, {"shownCount", "1"}}),
          QVLJSONValue(QVLJSONDictionary{{"optedOut", "true"}})}) {
        EXPECT_THROW(m_journals->loadFromJSONObject(QVLJSONDictionary{{"key", entry}}), QVLUnrecognizedOperationError)
            << entry.description();
    }
    EXPECT_EQ(m_journals->allEventKeys().size(), 2U);
}

TEST_F(Journals, AChangeInPlaceIsReportedOnceAndAnEmptyRecordCountsAsMissing) {
    const auto event = m_journals->eventForKey("e");
    EXPECT_EQ(m_journals->eventForKey("e"), event);
    EXPECT_THAT(m_journals->allEventKeys(), ElementsAre("e"));
    event->reset();
    EXPECT_EQ(m_changes->take(), 0);
    event->trigger();
    EXPECT_EQ(m_changes->take(), 1);
    m_journals->eventCollection()->processChangedCollectionItems();
    EXPECT_EQ(m_changes->take(), 0);
    event->reset();
    EXPECT_EQ(m_changes->take(), 1);
    EXPECT_EQ(m_journals->publishedJSONObject(), fileOf({}, {}));
    m_journals->eventCollection()->setCollection({});
    EXPECT_EQ(m_changes->take(), 0);
}

TEST_F(Journals, ResetReportsEachCollectionThatHeldSomethingAndDetachesItsRecords) {
    m_journals->reset();
    EXPECT_EQ(m_changes->take(), 0);
    const auto event = m_journals->eventForKey("e");
    event->trigger();
    m_journals->flagForKey("f")->updateFlag(false);
    m_journals->flagForKey("empty")->reset();
    m_changes->take();
    m_journals->reset();
    EXPECT_EQ(m_changes->take(), 2);
    EXPECT_THAT(m_journals->allFlagKeys(), IsEmpty());
    EXPECT_EQ(event->count(), 1U);
    EXPECT_EQ(event->collection(), nullptr);
    EXPECT_EQ(m_journals->eventForKey("e")->collection(), m_journals->eventCollection());
}

TEST_F(Journals, OverridesAreHandedOutAndWrittenAndOutliveAReset) {
    m_journals->eventForKey("e")->trigger();
    const auto overriding = QVLJournalEvent::init();
    overriding->setCount(9);
    m_journals->eventCollection()->setCollectionOverrides({{"e", QVLJSONValue::record(overriding)}});
    EXPECT_EQ(m_journals->eventForKey("e"), overriding);
    const QVLJSONValue file = fileOf({{"e", QVLJSONDictionary{{"count", 9}}}}, {});
    EXPECT_EQ(m_journals->qvl_JSONObject(), file);
    m_journals->reset();
    EXPECT_EQ(m_journals->qvl_JSONObject(), file);
    EXPECT_EQ(m_journals->publishedJSONObject(), file);
}

TEST_F(Journals, AnOverrideThatChangedUnseenIsFoundWithTheNextChange) {
    m_journals->eventForKey("b")->trigger();
    const auto override = QVLJournalEvent::init();
    m_journals->eventCollection()->setCollectionOverrides({{"a", QVLJSONValue::record(override)}});
    m_journals->eventForKey("b")->trigger();
    m_journals->eventForKey("a")->setCount(7);
    const auto savedCount = [this] {
        const QVLJSONValue saved = QVLJSONSerialization::JSONObjectWithData(m_journals->textToSave().text).value;
        const QVLJSONDictionary events = saved.dictionaryOrEmpty().valueForKey("events").dictionaryOrEmpty();
        return events.valueForKey("a").dictionaryOrEmpty().valueForKey("count").unsignedValue();
    };
    EXPECT_EQ(savedCount(), 7U);
    m_journals->eventForKey("b")->trigger();
    m_journals->eventCollection()->setCollectionOverrides({});
    EXPECT_EQ(savedCount(), 0U);
}

TEST_F(Journals, ASessionEventCountsOncePerSession) {
    m_journals->triggerSessionEventForKey("e");
    m_journals->triggerSessionEventForKey("e");
    EXPECT_EQ(countOf("e"), 1U);
    EXPECT_EQ(m_changes->take(), 1);
    m_journals->triggerSessionEvents();
    EXPECT_EQ(countOf("e"), 1U);
    m_journals->triggerSessionEventForKey("e");
    EXPECT_EQ(countOf("e"), 2U);
    m_journals->eventForKey("e")->reset();
    m_journals->triggerSessionEventForKey("e");
    EXPECT_EQ(countOf("e"), 1U);
}

TEST_F(Journals, ALinkCountsInEverySessionForAsLongAsItIsHeld) {
    auto link = m_journals->eventSessionLinkForKey("held");
    static_cast<void>(m_journals->eventSessionLinkForKey("dropped"));
    EXPECT_EQ(m_journals->eventSessionLinkForKey("held"), link);
    EXPECT_EQ(countOf("held"), 1U);
    EXPECT_EQ(countOf("dropped"), 1U);
    m_journals->triggerSessionEvents();
    EXPECT_EQ(countOf("held"), 2U);
    EXPECT_EQ(countOf("dropped"), 1U);
    link.reset();
    m_journals->triggerSessionEvents();
    EXPECT_EQ(countOf("held"), 2U);
    link = m_journals->eventSessionLinkForKey("held");
    EXPECT_EQ(countOf("held"), 3U);
}

TEST_F(Journals, WhoeverIsToldMayLinkFurtherKeysOrDropTheJournals) {
    const auto link = m_journals->eventSessionLinkForKey("a");
    std::shared_ptr<QVLEventSessionLink> added;
    m_changes->whenTold = [&](QVLJournals& journals) {
        if (!added) {
            added = journals.eventSessionLinkForKey("b");
        }
    };
    m_journals->triggerSessionEvents();
    EXPECT_EQ(countOf("b"), 1U);

    m_changes->whenTold = [&](QVLJournals&) { m_journals.reset(); };
    m_changes->take();
    m_journals->flagForKey("f")->setFlag(true);
    EXPECT_EQ(m_journals, nullptr);
    m_journals = QVLJournals::initWithQVLJSONObject(fileOf({{"a", QVLJSONDictionary{{"count", 1}}}}, {}));
    m_journals->setDelegate(m_changes);
    m_journals->reset();
    EXPECT_EQ(m_journals, nullptr);
    m_journals = QVLJournals::initWithQVLJSONObject(QVLJSONDictionary{});
    const auto first = m_journals->eventSessionLinkForKey("a");
    const auto second = m_journals->eventSessionLinkForKey("b");
    m_journals->setDelegate(m_changes);
    m_journals->triggerSessionEvents();
    EXPECT_EQ(m_journals, nullptr);
}

TEST_F(Journals, ReadersOnOtherThreadsSeeTheLastReportedRecords) {
    std::atomic<bool> isDone = false;
    std::thread reader([this, &isDone] {
        std::int64_t last = 0;
        while (!isDone) {
            const QVLJSONDictionary events =
                m_journals->publishedJSONObject().dictionaryOrEmpty().valueForKey("events").dictionaryOrEmpty();
            const std::int64_t count =
                events.valueForKey("a").dictionaryOrEmpty().valueForKey("count").qvl_castToIntegerValue();
            EXPECT_GE(count, last);
            last = count;
            static_cast<void>(m_journals->eventCollection()->collectionWithOverrides().count());
        }
    });
    for (int round = 0; round < 300; ++round) {
        m_journals->eventForKey("a")->trigger();
        m_journals->eventForKey("b" + std::to_string(round % 20))->trigger();
        m_journals->flagForKey("f")->updateFlag(round % 2 == 0);
        m_journals->flagForKey("f")->reset();
    }
    isDone = true;
    reader.join();
}

} // namespace
