#include "QVLJSONSerializable.h"
#include "QVLOutput.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr auto kMostNegative = std::numeric_limits<std::int64_t>::min();
constexpr auto kMostPositive = std::numeric_limits<std::int64_t>::max();
constexpr auto kLargestNatural = std::numeric_limits<std::uint64_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

QVLJSONValue outputRecord(const QVLJSONValue& value) {
    return QVLJSONValue::record(QVLOutput::initWithQVLJSONObject(value));
}

constexpr QVLRecordClass kOutputClass = {"QVLOutput",
                                         [](const QVLJSONValue& object) -> std::shared_ptr<QVLJSONSerializable> {
                                             return object.isNull() ? nullptr
                                                                    : QVLOutput::initWithQVLJSONObject(object);
                                         },
                                         nullptr, /*isJournalClass=*/false};
constexpr QVLRecordClass kNoRecordClass = {"QVLObject", nullptr, nullptr, /*isJournalClass=*/false};

std::string reasonOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "no throw";
}

TEST(JSONValue, EqualsAndHashesByValueAcrossRepresentations) {
    // Each line holds what is equal; everything on different lines differs.
    const std::vector<std::vector<QVLJSONValue>> groups = {
        {QVLJSONValue(), std::optional<std::string>(), static_cast<const char*>(nullptr)},
        {nullptr},
        {0, false, 0.0, -0.0, 0U},
        {1, true, 1.0, 1U, static_cast<signed char>(1)},
        {kMostNegative, -9223372036854775808.0},
        {kMostPositive, 9223372036854775807U},
        {9223372036854775808U, 9223372036854775808.0},
        {kLargestNatural},
        {18446744073709551616.0},
        {9007199254740992, 9007199254740992.0},
        {9007199254740993},
        {0.1},
        {kInfinity},
        {-kInfinity},
        {"", std::string()},
        {"1"},
        {"a", std::string("a"), QVLJSONString("a")},
        {QVLJSONArray{}},
        {QVLJSONArray{nullptr}, QVLJSONArray{QVLJSONValue()}},
        {QVLJSONArray{1, "a"}, QVLJSONArray{true, "a"}},
        {QVLJSONArray{"a", 1}},
        {QVLJSONArray{QVLJSONValue(QVLJSONArray{1})}},
        {QVLJSONDictionary{}, QVLJSONDictionary{{"a", QVLJSONValue()}}},
        {QVLJSONDictionary{{"a", 1}, {"b", 2}}, QVLJSONDictionary{{"b", 2.0}, {"a", true}, {"a", 7}}},
        {QVLJSONDictionary{{"a", 1}}},
        {QVLJSONDictionary{{"a", nullptr}}},
        {QVLJSONDictionary{{"b", 1}}},
        {outputRecord(5), outputRecord(5.0)},
        {outputRecord(6)},
    };
    for (std::size_t left = 0; left < groups.size(); ++left) {
        for (std::size_t right = 0; right < groups.size(); ++right) {
            for (const QVLJSONValue& a : groups[left]) {
                for (const QVLJSONValue& b : groups[right]) {
                    EXPECT_EQ(a == b, left == right) << a.description() << " and " << b.description();
                    EXPECT_TRUE(left != right || a.hash() == b.hash()) << a.description() << " and " << b.description();
                }
            }
        }
    }
    EXPECT_FALSE(QVLJSONValue(kNotANumber) == QVLJSONValue(kNotANumber));
}

TEST(JSONValue, CastsConvertNothing) {
    struct Row {
        QVLJSONValue value;
        std::int64_t integer;
        std::uint64_t natural;
        bool boolean;
    };
    const std::vector<Row> rows = {
        {QVLJSONValue(), 0, 0, false},
        {nullptr, 0, 0, false},
        {true, 1, 1, true},
        {-1, -1, kLargestNatural, true},
        {kLargestNatural, kMostPositive, kLargestNatural, true},
        {2.9, 2, 2, true},
        {-2.9, -2, kLargestNatural - 1, true},
        {-0.0, 0, 0, false},
        {9223372036854775808.0, kMostPositive, 9223372036854775808U, true},
        {-9223372036854775808.0, kMostNegative, 9223372036854775808U, true},
        {-1e300, kMostNegative, 9223372036854775808U, true},
        {kInfinity, kMostPositive, kLargestNatural, true},
        {kNotANumber, 0, 0, true},
        {"12", 0, 0, false},
        {QVLJSONArray{1}, 0, 0, false},
        {QVLJSONDictionary{{"a", 1}}, 0, 0, false},
        {outputRecord(1), 0, 0, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value.description());
        EXPECT_EQ(row.value.qvl_castToIntegerValue(), row.integer);
        EXPECT_EQ(row.value.unsignedValue(), row.natural);
        EXPECT_EQ(row.value.qvl_castToBoolValue(), row.boolean);
        EXPECT_EQ(row.value.qvl_castToStringValue().has_value(), row.value.isString());
        EXPECT_EQ(row.value.qvl_castToArrayValue().has_value(), row.value.isArray());
        EXPECT_EQ(row.value.qvl_castToDictionaryValue().has_value(), row.value.isDictionary());
    }
}

TEST(JSONValue, ConversionTreatsDictionariesInArraysUnlikeThoseInDictionaries) {
    const QVLJSONDictionary plain{{"a", QVLJSONArray{1, "b"}}, {"c", QVLJSONDictionary{{"d", nullptr}}}};
    const QVLJSONValue silent = QVLJSONValue::record(QVLOutput::init());
    struct Row {
        QVLJSONValue value;
        QVLJSONValue converted;
    };
    const std::vector<Row> rows = {
        {"a", "a"},
        {true, true},
        {nullptr, nullptr},
        {plain, plain},
        {outputRecord(5), 5},
        {QVLJSONDictionary{{"a", outputRecord(plain)}, {"b", silent}}, QVLJSONDictionary{{"a", plain}}},
        {QVLJSONArray{1, outputRecord("x"), silent}, QVLJSONArray{1, "x", nullptr}},
        {QVLJSONArray{plain}, QVLJSONArray{nullptr}},
        {QVLJSONArray{QVLJSONArray{plain, 1}, 2}, QVLJSONArray{QVLJSONArray{nullptr, 1}, 2}},
        {QVLJSONArray{QVLJSONDictionary{{"qvl_JSONObject", 7}}}, QVLJSONArray{7}},
        {QVLJSONDictionary{{"a", QVLJSONArray{plain}}}, QVLJSONDictionary{{"a", QVLJSONArray{nullptr}}}},
    };
    for (const Row& row : rows) {
        const QVLJSONValue converted = row.value.qvl_JSONObject();
        EXPECT_EQ(converted, row.converted) << row.value.description() << " became " << converted.description();
    }
    EXPECT_TRUE(QVLJSONValue(true).qvl_JSONObject().isBoolean());
}

TEST(JSONValue, DecodersMakeRecordsAndThrowForWrongKindsBeforeWrongClasses) {
    EXPECT_EQ(QVLJSONArray::arrayWithQVLJSONArray(QVLJSONArray{1, "a"}, kOutputClass),
              (QVLJSONArray{outputRecord(1), outputRecord("a")}));
    EXPECT_EQ(
        QVLJSONDictionary::dictionaryWithQVLJSONObject(QVLJSONDictionary{{"a", 1}, {"gone", nullptr}}, kOutputClass),
        (QVLJSONDictionary{{"a", outputRecord(1)}}));
    EXPECT_EQ(QVLJSONArray::arrayWithQVLJSONArray(QVLJSONArray{}, kOutputClass), QVLJSONArray());
    EXPECT_EQ(QVLJSONDictionary::dictionaryWithQVLJSONObject(QVLJSONDictionary{}, kOutputClass), QVLJSONDictionary());
    EXPECT_FALSE(QVLJSONArray::arrayWithQVLJSONArray({}, kNoRecordClass));
    EXPECT_FALSE(QVLJSONDictionary::dictionaryWithQVLJSONObject({}, kNoRecordClass));

    const auto decodeArray = [](const QVLJSONValue& value, const QVLRecordClass& valueClass) {
        return reasonOf([&] { static_cast<void>(QVLJSONArray::arrayWithQVLJSONArray(value, valueClass)); });
    };
    const auto decodeDictionary = [](const QVLJSONValue& value, const QVLRecordClass& valueClass) {
        return reasonOf([&] { static_cast<void>(QVLJSONDictionary::dictionaryWithQVLJSONObject(value, valueClass)); });
    };
    EXPECT_EQ(decodeArray(QVLJSONDictionary{{"a", 1}}, kNoRecordClass), "Bad array object: {\"a\":1}");
    EXPECT_EQ(decodeArray(nullptr, kOutputClass), "Bad array object: <null>");
    EXPECT_EQ(decodeArray(QVLJSONArray{}, kNoRecordClass), "Class must conform to QVLJSONCompatible protocol");
    EXPECT_EQ(decodeDictionary(QVLJSONArray{1}, kNoRecordClass), "Bad object: [1]");
    EXPECT_EQ(decodeDictionary("text", kOutputClass), "Bad object: text");
    EXPECT_EQ(decodeDictionary(QVLJSONDictionary{}, kNoRecordClass),
              "Class must conform to QVLJSONCompatible protocol");
}

TEST(JSONValue, NestsUpToTheLimitAndNoDeeper) {
    QVLJSONValue array = QVLJSONArray{};
    QVLJSONValue dictionary = QVLJSONDictionary{};
    while (array.depth() < QVLJSONValue::kMaximumDepth) {
        array = QVLJSONArray{QVLJSONValue(array)};
        dictionary = QVLJSONDictionary{{"a", dictionary}};
    }
    EXPECT_EQ(dictionary.depth(), QVLJSONValue::kMaximumDepth);
    EXPECT_THROW((QVLJSONArray{1, array}), std::length_error);
    EXPECT_THROW((QVLJSONDictionary{{"a", array}}), std::length_error);
    EXPECT_THROW(static_cast<void>(QVLJSONDictionary().withValueForKey(dictionary, "a")), std::length_error);
    EXPECT_EQ(array.hash(), QVLJSONValue(array.qvl_JSONObject()).hash());
}

TEST(JSONValue, DescribesEveryKindForLogLines) {
    EXPECT_EQ(QVLJSONValue().description(), "(null)");
    EXPECT_EQ(QVLJSONValue(nullptr).description(), "<null>");
    EXPECT_EQ(QVLJSONValue("a \"b\"").description(), "a \"b\"");
    EXPECT_EQ((QVLJSONDictionary{{"a", QVLJSONArray{nullptr, "b", 1.5, true}}}).description(),
              R"({"a":[null,"b",1.5,true]})");
    EXPECT_THAT(QVLJSONValue(QVLJSONArray{outputRecord(5)}).description(),
                testing::MatchesRegex(".<QVLOutput.*value=5."));
}

TEST(JSONDictionary, BehavesLikeAMapInWhateverOrderItIsBuilt) {
    using Model = std::map<std::string, std::int64_t>;
    const auto modelOf = [](const QVLJSONDictionary& dictionary) {
        Model model;
        for (const auto& entry : dictionary) {
            model.emplace(entry.key.text(), entry.value.qvl_castToIntegerValue());
        }
        return model;
    };
    std::mt19937 random(7); // NOLINT(cert-msc51-cpp): the same dictionaries in every run
    const auto randomKey = [&] { return std::string(1, "aBz\xC3"[random() % 4]) + (random() % 2 ? "x" : ""); };
    for (int round = 0; round < 500; ++round) {
        Model under;
        Model over;
        std::vector<QVLJSONDictionary::Entry> underEntries;
        QVLJSONDictionary grown;
        for (std::size_t count = random() % 5; count > 0; --count) {
            const std::string key = randomKey();
            const auto number = static_cast<std::int64_t>(random() % 3);
            underEntries.push_back({key, number});
            under.emplace(key, number); // The first of equal keys counts.
            const std::string other = randomKey();
            const bool isRemoving = random() % 4 == 0;
            grown = grown.withValueForKey(isRemoving ? QVLJSONValue() : QVLJSONValue(number), other);
            isRemoving ? static_cast<void>(over.erase(other)) : static_cast<void>(over.insert_or_assign(other, number));
        }
        const QVLJSONDictionary built(underEntries);
        EXPECT_EQ(modelOf(built), under);
        EXPECT_EQ(modelOf(grown), over);
        Model merged = over;
        merged.merge(under);
        EXPECT_EQ(modelOf(QVLJSONDictionary::merged(built, grown)), merged);
        const std::string key = randomKey();
        EXPECT_EQ(grown.hasKey(key), over.contains(key));
        EXPECT_EQ(grown.valueForKey(key).isNothing(), !over.contains(key));
        EXPECT_EQ(grown.lowerBound(key) - grown.begin(), std::distance(over.begin(), over.lower_bound(key)));
    }
}

} // namespace
