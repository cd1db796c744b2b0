#include "QVLPropertyCollection.h"

#include "RecordingLogger.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr const char* kPrefix = "Test.override.";

class RecordingDelegate final : public QVLPropertyCollectionDelegate {
public:
    void collection(QVLPropertyCollection& collection, const std::vector<std::string>& objectsDidChange) override {
        m_reports.push_back(objectsDidChange);
        if (whenTold) {
            whenTold(collection);
        }
    }
    /// The keys of each report so far, and forgets them.
    std::vector<std::vector<std::string>> take() { return std::exchange(m_reports, {}); }

    std::function<void(QVLPropertyCollection&)> whenTold;

private:
    std::vector<std::vector<std::string>> m_reports;
};

class PropertyCollection : public testing::Test {
protected:
    PropertyCollection() {
        m_platform.install();
        m_collection->setDelegate(m_delegate);
    }

    void setDefault(const std::string& key, const QVLJSONValue& value) const {
        m_platform.userDefaults->setObjectForKey(value, kPrefix + key);
    }

    TestPlatform m_platform;
    const std::shared_ptr<RecordingDelegate> m_delegate = std::make_shared<RecordingDelegate>();
    const std::shared_ptr<QVLPropertyCollection> m_collection = QVLPropertyCollection::init();
    RecordedLog m_log;
};

TEST_F(PropertyCollection, AnExplicitOverrideBeatsAUserDefaultWhichBeatsTheBase) {
    m_collection->setOverrideDefaultsPrefix(kPrefix);
    setDefault("k", 3);
    setDefault("d", "defaults only");
    m_collection->setCollection({{"k", 1}, {"b", "base only"}});
    EXPECT_EQ(m_collection->mergedValueForKey("k"), QVLJSONValue(3));
    m_collection->setCollectionOverrides({{"k", 2}, {"o", nullptr}});
    EXPECT_EQ(m_collection->mergedValueForKey("k"), QVLJSONValue(2));
    EXPECT_EQ(m_collection->collectionWithOverrides(),
              (QVLJSONDictionary{{"k", 2}, {"b", "base only"}, {"d", "defaults only"}, {"o", nullptr}}));
    EXPECT_THAT(m_collection->collectionKeys(), UnorderedElementsAre("k", "b", "d", "o"));
    EXPECT_TRUE(m_collection->mergedValueForKey("absent").isNothing());
}

TEST_F(PropertyCollection, ReportsExactlyTheKeysWhoseMergedValueChanged) {
    struct Step {
        const char* name;
        QVLJSONDictionary base;
        QVLJSONDictionary overrides;
        std::vector<std::string> changed;
    };
    const std::vector<Step> steps = {
        {"nothing at first", {}, {}, {}},
        {"everything is new", {{"a", 1}, {"b", QVLJSONArray{1}}}, {}, {"a", "b"}},
        {"equal but not identical", {{"a", 1.0}, {"b", QVLJSONArray{true}}}, {}, {}},
        {"one value differs", {{"a", 1}, {"b", QVLJSONArray{2}}}, {}, {"b"}},
        {"an override equal to the base", {{"a", 1}, {"b", QVLJSONArray{2}}}, {{"a", 1}}, {}},
        {"an override that differs", {{"a", 1}, {"b", QVLJSONArray{2}}}, {{"a", 5}, {"c", 0}}, {"a", "c"}},
        {"a base value under an override", {{"a", 2}, {"b", QVLJSONArray{2}}}, {{"a", 5}, {"c", 0}}, {}},
        {"the override goes", {{"a", 2}, {"b", QVLJSONArray{2}}}, {}, {"a", "c"}},
        {"nothing turns to null", {{"a", 2}, {"b", QVLJSONArray{2}}, {"c", nullptr}}, {}, {"c"}},
        {"everything goes", {}, {}, {"a", "b", "c"}},
    };
    for (const Step& step : steps) {
        m_collection->setCollection(step.base);
        m_collection->setCollectionOverrides(step.overrides);
        std::vector<std::string> changed;
        for (const std::vector<std::string>& report : m_delegate->take()) {
            EXPECT_THAT(report, testing::Not(IsEmpty())) << step.name;
            changed.insert(changed.end(), report.begin(), report.end());
        }
        EXPECT_THAT(changed, testing::UnorderedElementsAreArray(step.changed)) << step.name;
    }
}

TEST_F(PropertyCollection, PretendingToBeEmptyHidesAndReportsEverythingAndKeepsTheLayers) {
    m_collection->setCollection({{"a", 1}, {"b", 2}});
    m_delegate->take();
    m_collection->setPretendIsEmpty(false);
    EXPECT_THAT(m_delegate->take(), IsEmpty());
    m_collection->setPretendIsEmpty(true);
    m_collection->setPretendIsEmpty(true);
    EXPECT_THAT(m_delegate->take(), ElementsAre(ElementsAre("a", "b")));
    EXPECT_TRUE(m_collection->collectionWithOverrides().isEmpty());
    EXPECT_TRUE(m_collection->mergedValueForKey("a").isNothing());
    EXPECT_EQ(m_collection->collection().count(), 2U);
    m_collection->setCollection({{"a", 1}, {"c", 3}});
    EXPECT_THAT(m_delegate->take(), IsEmpty());
    m_collection->setPretendIsEmpty(false);
    EXPECT_THAT(m_delegate->take(), ElementsAre(ElementsAre("a", "c")));
}

TEST_F(PropertyCollection, UserDefaultsAreSearchedUntilSomethingIsFoundAndThenFixed) {
    m_platform.userDefaults->setObjectForKey("other", "Test.overrid");
    EXPECT_FALSE(m_collection->defaultOverrides());
    m_collection->setOverrideDefaultsPrefix(kPrefix);
    m_collection->setCollection({{"a", 1}});
    EXPECT_FALSE(m_collection->defaultOverrides());
    EXPECT_THAT(m_log->take(), IsEmpty());

    setDefault("a", 2);
    m_platform.userDefaults->setArguments({{std::string(kPrefix) + "b", true}});
    EXPECT_EQ(m_collection->mergedValueForKey("a"), QVLJSONValue(2));
    EXPECT_THAT(m_log->take(),
                ElementsAre("info QVLPropertyCollection: Overriding following quorvel values from command "
                            "line: {\"a\":2,\"b\":true}"));
    setDefault("a", 9);
    setDefault("c", 9);
    EXPECT_EQ(m_collection->defaultOverrides(), (QVLJSONDictionary{{"a", 2}, {"b", true}}));
    EXPECT_THAT(m_log->take(), IsEmpty());
    m_delegate->take();
    m_collection->processChangedCollectionItems();
    EXPECT_THAT(m_delegate->take(), ElementsAre(ElementsAre("a", "b")));
}

TEST_F(PropertyCollection, UserDefaultsCountOnlyWithAPrefixAndWhenAMergeNeedsThem) {
    setDefault("a", 2);
    m_collection->setPretendIsEmpty(true);
    m_collection->setOverrideDefaultsPrefix(kPrefix);
    EXPECT_THAT(m_collection->collectionKeys(), IsEmpty());
    EXPECT_THAT(m_log->take(), IsEmpty());
    m_collection->setPretendIsEmpty(false);
    EXPECT_EQ(m_collection->mergedValueForKey("a"), QVLJSONValue(2));

    m_delegate->take();
    m_collection->setOverrideDefaultsPrefix("");
    EXPECT_THAT(m_delegate->take(), IsEmpty());
    EXPECT_FALSE(m_collection->defaultOverrides());
    EXPECT_TRUE(m_collection->mergedValueForKey("a").isNothing());
    m_collection->processChangedCollectionItems();
    EXPECT_THAT(m_delegate->take(), ElementsAre(ElementsAre("a")));
}

TEST_F(PropertyCollection, AChangeMadeByTheDelegateIsReportedAsAnotherOne) {
    m_delegate->whenTold = [](QVLPropertyCollection& collection) {
        collection.setCollection(collection.collection().withValueForKey(1, "added"));
    };
    m_collection->setCollection({{"a", 1}});
    EXPECT_THAT(m_delegate->take(), ElementsAre(ElementsAre("a"), ElementsAre("added")));
}

TEST_F(PropertyCollection, ChangesFromAnotherThreadFailAnAssertionAndAreReportedAllTheSame) {
    std::thread([this] { m_collection->setCollection({{"a", 1}}); }).join();
    const std::vector<std::string> lines = m_log->take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], testing::MatchesRegex("error QVLPropertyCollection: Assertion failed: .*MainThread.*\nShould "
                                                "always execute on main thread\n.*"));
    EXPECT_THAT(m_delegate->take(), ElementsAre(ElementsAre("a")));
}

TEST_F(PropertyCollection, ReadersOnOtherThreadsSeeWholeStates) {
    m_collection->setOverrideDefaultsPrefix(kPrefix);
    std::atomic<bool> isDone = false;
    std::thread reader([&] {
        while (!isDone) {
            const QVLJSONDictionary merged = m_collection->collectionWithOverrides();
            EXPECT_EQ(merged.valueForKey("a"), merged.valueForKey("b"));
            static_cast<void>(m_collection->mergedValueForKey("a"));
        }
    });
    for (int count = 0; count < 500; ++count) {
        if (count == 250) {
            setDefault("c", 1);
            setDefault("d", 1);
        }
        m_collection->setCollection({{"a", count}, {"b", count}});
        m_collection->setPretendIsEmpty(count % 3 == 0);
    }
    isDone = true;
    reader.join();
}

} // namespace
