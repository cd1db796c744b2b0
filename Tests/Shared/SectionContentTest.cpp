#include "EngineTest.h"
#include "QVLDebugInputsContent.h"
#include "QVLDebugInputsDataSourceObject.h"
#include "QVLDebugJournalContent.h"
#include "QVLDebugJournalFields.h"
#include "QVLDebugOutputsContent.h"
#include "QVLDebugScriptsContent.h"
#include "QVLInputsManager.h"
#include "QVLJournalEvent.h"
#include "QVLJournalFlag.h"

#include <QCoreApplication>

namespace {

using SectionContentTest = EngineTest;

class SlowManager final : public QVLInputsManager {
public:
    void updateInputsNow() override {}
    [[nodiscard]] double mainThreadGenerationTime() const override { return 0.0006; }
    [[nodiscard]] double totalGenerationTime() const override { return 12.34567; }
    [[nodiscard]] double generationTimeForInput(const std::string& key) const override { return key == "b" ? 1.5 : 0; }
};

TEST_F(SectionContentTest, RulesNeedNoApplication) {
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
}

TEST_F(SectionContentTest, InputsAreRowsWithTheirOverridesAndTimes) {
    engine->setInputs({{"b", 1}, {"a", nullptr}});
    engine->setInputsOverrides({{"b", 2}, {"c", 3}});
    const SlowManager manager;
    const QVLDebugRows rows = qvl_inputsRows(*engine, &manager);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0]->valueType(), QVLDebugValueTypeNull);
    EXPECT_EQ(rows[1]->value(), QVLDebugValue(1));
    EXPECT_EQ(rows[1]->overrideValue(), QVLDebugValue(2));
    EXPECT_EQ(dynamic_cast<const QVLDebugInputsDataSourceObject&>(*rows[1]).generationTime(), 1.5);
    EXPECT_EQ(qvl_inputsGenerationText(&manager), "Inputs generated in 0.001 (12.346) seconds");
    EXPECT_EQ(qvl_generationTimeText(1.5), "1.5000s");
    // The list of all keys has that of the override too.
    EXPECT_EQ(qvl_inputDefaultsKey(*engine, 2), "QVLQuorvelOverride.input.c");
    EXPECT_EQ(qvl_inputDefaultsKey(*engine, 3), std::nullopt);
    EXPECT_EQ(qvl_outputDefaultsKey(*engine, -1), std::nullopt);
}

TEST_F(SectionContentTest, FieldsOfTheJournalWriteIntoTheRecord) {
    const auto event = engine->journals()->eventForKey("session");
    for (int round = 0; round < 2; ++round) {
        event->trigger();
    }
    const auto fields = qvl_fieldsForEvent(event);
    ASSERT_EQ(fields.size(), 3U);
    fields[0].write({});
    EXPECT_EQ(event->firstTime(), std::nullopt);
    fields[1].write(QVLDate(std::chrono::seconds(5)));
    EXPECT_EQ(event->lastTime(), QVLDate(std::chrono::seconds(5)));
    for (const auto& [typed, count] : std::vector<std::pair<QVLJSONValue, std::uint64_t>>{
             {7.9, 7}, {-3, 0}, {1e300, std::numeric_limits<std::uint64_t>::max()}, {nullptr, 0}, {{}, 0}}) {
        fields[2].write(typed);
        EXPECT_EQ(event->count(), count);
    }
    const auto flag = engine->journals()->flagForKey("tour");
    qvl_fieldsForFlag(flag)[1].write(QVLJSONValue(true));
    EXPECT_TRUE(flag->flag());
}

TEST_F(SectionContentTest, EmptyRecordsAreHiddenWhateverIsSearchedFor) {
    static_cast<void>(engine->journals()->eventForKey("empty"));
    engine->journals()->eventForKey("session")->trigger();
    for (const char* text : {"", "e"}) {
        const QVLDebugRows rows =
            qvl_sortedAndFilteredRows(qvl_journalRows(*engine->journals()), qvl_journalFilterPredicate(text));
        ASSERT_EQ(rows.size(), 1U);
        EXPECT_EQ(rows[0]->key(), "session");
    }
}

TEST_F(SectionContentTest, TheButtonOfAScriptFollowsItsState) {
    EXPECT_FALSE(qvl_scriptButton(QVLScriptStateDownloading, true).isEnabled);
    EXPECT_EQ(qvl_scriptButton(QVLScriptStateFailed, true).title, "Re-attempt download…");
    EXPECT_FALSE(qvl_scriptButton(QVLScriptStateFailed, true).isHidden);
    EXPECT_TRUE(qvl_scriptButton(QVLScriptStateUnknown, true).isHidden);
    EXPECT_EQ(qvl_scriptButton(QVLScriptStateAvailable, false).title, "Use Script");
    EXPECT_EQ(qvl_scriptsStatus(*engine).scriptType, "none");
    EXPECT_EQ(qvl_scriptsStatus(*engine).version, "Unknown");
}

} // namespace
