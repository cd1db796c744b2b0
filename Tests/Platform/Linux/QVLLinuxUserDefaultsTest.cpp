#include "QVLLinuxUserDefaults.h"

#include "FaultyFileManager.h"
#include "QVLLinuxArguments.h"
#include "QVLLinuxFileManager.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace {

class QVLLinuxUserDefaultsTest : public testing::Test {
protected:
    [[nodiscard]] std::unique_ptr<QVLLinuxUserDefaults> make(const std::vector<std::string>& arguments = {}) const {
        return std::make_unique<QVLLinuxUserDefaults>(files, path, arguments);
    }
    [[nodiscard]] std::string file(const std::string& suffix = "") const {
        return files->contentsOfFileAtPath(path + suffix).value.value_or("(none)");
    }

    TemporaryDirectory directory;
    std::shared_ptr<FaultyFileManager> files =
        std::make_shared<FaultyFileManager>(std::make_shared<QVLLinuxFileManager>());
    std::string path = directory.path("application/defaults.json");
};

} // namespace

TEST_F(QVLLinuxUserDefaultsTest, WhatIsStoredIsFoundByTheNextProcessUntilItIsRemoved) {
    const auto defaults = make();
    EXPECT_TRUE(defaults->dictionaryRepresentation().isEmpty());
    EXPECT_FALSE(files->itemExistsAtPath(directory.path("application")));
    defaults->setObjectForKey(true, "QVLPersistOverrides");
    defaults->setObjectForKey(QVLJSONArray{1, "zwei", nullptr}, "QVLQuorvelOverride.input.größe");
    EXPECT_EQ(make()->dictionaryRepresentation(), defaults->dictionaryRepresentation());
    EXPECT_TRUE(make()->boolForKey("QVLPersistOverrides"));
    defaults->removeObjectForKey("QVLPersistOverrides");
    EXPECT_TRUE(make()->objectForKey("QVLPersistOverrides").isNothing());
    EXPECT_EQ(make()->objectForKey("QVLQuorvelOverride.input.größe"), QVLJSONValue(QVLJSONArray{1, "zwei", nullptr}));
}

TEST_F(QVLLinuxUserDefaultsTest, ArgumentsStandAboveStoredValuesAndAreNeverStored) {
    make()->setObjectForKey("stored", "key");
    const auto defaults = make({"-key", "given"});
    EXPECT_EQ(defaults->objectForKey("key"), QVLJSONValue("given"));
    defaults->setObjectForKey(1, "other");
    defaults->setObjectForKey("changed", "key");
    EXPECT_EQ(defaults->objectForKey("key"), QVLJSONValue("given"));
    EXPECT_EQ(make()->objectForKey("key"), QVLJSONValue("changed"));
}

TEST_F(QVLLinuxUserDefaultsTest, AChangeKeepsWhatAnotherProcessHasStoredMeanwhile) {
    const auto here = make();
    const auto there = make();
    here->setObjectForKey(1, "a");
    there->setObjectForKey(2, "b");
    here->setObjectForKey(3, "c");
    EXPECT_EQ(here->dictionaryRepresentation(), (QVLJSONDictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
}

TEST_F(QVLLinuxUserDefaultsTest, AFileThatIsNoDictionaryCountsAsEmptyAndIsKeptAside) {
    for (const std::string content : {"{\"a\": 1", "[1]", ""}) {
        ASSERT_TRUE(files->createDirectoryAtPath(directory.path("application"), true));
        ASSERT_TRUE(files->writeAtomically(content, path));
        const auto defaults = make();
        EXPECT_TRUE(defaults->dictionaryRepresentation().isEmpty());
        EXPECT_EQ(file(), content);
        defaults->setObjectForKey(1, "b");
        EXPECT_EQ(make()->dictionaryRepresentation(), (QVLJSONDictionary{{"b", 1}}));
        EXPECT_EQ(file(".unreadable"), content);
    }
}

TEST_F(QVLLinuxUserDefaultsTest, WhatCannotBeStoredChangesNothing) {
    const auto defaults = make();
    defaults->setObjectForKey("kept", "key");
    const std::string before = file();

    QVLJSONValue deep = 1;
    while (deep.depth() < QVLJSONValue::kMaximumDepth) {
        deep = QVLJSONArray{deep};
    }
    defaults->setObjectForKey(deep, "key");
    defaults->setObjectForKey(std::numeric_limits<double>::infinity(), "key");
    defaults->setObjectForKey("\xFF", "key");
    files->writeFault = FaultyFileManager::always("full");
    defaults->setObjectForKey("lost", "key");
    files->writeFault = nullptr;
    files->readFault = FaultyFileManager::always("denied");
    defaults->setObjectForKey("lost", "key");
    files->readFault = nullptr;

    EXPECT_EQ(defaults->objectForKey("key"), QVLJSONValue("kept"));
    EXPECT_EQ(file(), before);
}

TEST_F(QVLLinuxUserDefaultsTest, AnUnreadableFileIsNotWrittenOverWhenItCannotBeKeptAside) {
    ASSERT_TRUE(files->createDirectoryAtPath(directory.path("application"), true));
    ASSERT_TRUE(files->writeAtomically("broken", path));
    files->writeFault = FaultyFileManager::atPathsEndingWith(".unreadable", "full");
    make()->setObjectForKey(1, "key");
    EXPECT_EQ(file(), "broken");
}

TEST_F(QVLLinuxUserDefaultsTest, IsUsedFromSeveralThreadsAtOnce) {
    const auto defaults = make();
    const auto store = [&](const std::string& key) {
        for (int number = 0; number < 10; ++number) {
            defaults->setObjectForKey(number, key);
            EXPECT_EQ(defaults->objectForKey(key), QVLJSONValue(number));
        }
    };
    std::thread other(store, "b");
    store("a");
    other.join();
    EXPECT_EQ(make()->dictionaryRepresentation(), (QVLJSONDictionary{{"a", 9}, {"b", 9}}));
}

TEST(QVLLinuxArgumentsTest, PairsBecomeDefaultsAndEverythingElseIsLeftToTheHost) {
    struct Row {
        std::vector<std::string> arguments;
        QVLJSONDictionary expected;
    };
    const std::vector<Row> rows = {
        {{"-a", "YES", "-b", "NO", "-c", "yes"}, {{"a", true}, {"b", false}, {"c", "yes"}}},
        {{"-a", "1.5", "-b", "[1, {}]", "-c", "\"1\"", "-d", "null", "-e", "true"},
         {{"a", 1.5}, {"b", QVLJSONArray{1, QVLJSONDictionary()}}, {"c", "1"}, {"d", nullptr}, {"e", true}}},
        {{"-a", "[1", "-b", "", "-c", "1e999", "-d", "two words"},
         {{"a", "[1"}, {"b", ""}, {"c", "1e999"}, {"d", "two words"}}},
        {{"-a", "-5", "-b", "-c", "-d", "--x"}, {{"a", -5}, {"b", "-c"}, {"d", "--x"}}},
        {{"-a", "1", "-a", "2"}, {{"a", 2}}},
        {{"-QVLQuorvelOverride.input.a b", "1"}, {{"QVLQuorvelOverride.input.a b", 1}}},
        {{"file", "-a", "1", "-5", "-b", "2", "-"}, {{"a", 1}, {"b", 2}}},
        {{"--option", "value", "--x=1", "-a", "1"}, {{"a", 1}}},
        {{"-a", "1", "--", "-b", "2"}, {{"a", 1}}},
        {{"-a"}, {}},
        {{}, {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(QVLDefaultsFromArguments(row.arguments), row.expected) << testing::PrintToString(row.arguments);
    }
    EXPECT_TRUE(QVLDefaultsFromArguments({"-a", "YES"}).valueForKey("a").isBoolean());
}
