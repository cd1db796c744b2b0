#include "QVLJSONSerialization.h"
#include "QVLJournalPages.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

std::string textOf(const QVLJournalPages& pages) {
    std::string text;
    pages.appendCompactText(text);
    EXPECT_LE(text.size(), pages.compactTextSize());
    return text;
}

TEST(JournalPages, AnyChangesGiveWhatOneDictionaryOfTheSameRecordsWouldGive) {
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same changes every time
    QVLJournalPages pages;
    std::map<std::string, QVLJSONValue> model;
    for (int round = 0; round < 300; ++round) {
        // Sorted, each key once; now a few, now enough to split pages or to empty them.
        std::map<std::string, QVLJSONValue> changes;
        const bool isRemoving = round % 5 == 4;
        for (std::size_t count = round % 50 == 0 ? 500 : random() % 8; count > 0; --count) {
            QVLJSONValue record = QVLJSONDictionary{{"count", static_cast<int>(random() % 9)}};
            changes["key" + std::to_string(random() % 700)] = isRemoving ? QVLJSONValue() : std::move(record);
        }
        std::vector<QVLJSONDictionary::Entry> entries;
        for (const auto& [key, value] : changes) {
            entries.push_back({key, value});
            model[key] = value;
        }
        pages = pages.with(entries);

        std::vector<QVLJSONDictionary::Entry> all;
        for (const auto& [key, value] : model) {
            all.push_back({key, value});
        }
        const QVLJSONDictionary whole(std::move(all));
        ASSERT_EQ(pages.dictionary(), whole);
        ASSERT_EQ(textOf(pages), QVLJSONSerialization::dataWithJSONObject(whole).text);
    }
}

TEST(JournalPages, ARecordThatIsNoJSONLeavesTheRestReadableButNotWritable) {
    const QVLJournalPages pages = QVLJournalPages().with({{"a", QVLJSONDictionary{{"count", 1}}}, {"b\xFF", 2}});
    EXPECT_FALSE(pages.isWritable());
    EXPECT_EQ(pages.dictionary().count(), 2U);
    EXPECT_TRUE(pages.with({{"b\xFF", {}}}).isWritable());
}

} // namespace
