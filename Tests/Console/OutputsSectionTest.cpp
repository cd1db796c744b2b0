#include "ConsoleTest.h"

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QToolButton>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OutputsSectionTest : public ConsoleTest {
protected:
    OutputsSectionTest() {
        engine->start();
        engine->setInputs({{"plan", "free"}});
        EXPECT_TRUE(
            load(scriptWithBody("answer.tour = true; answer.banner = 'hello'; return JSON.stringify(answer);")));
        evaluate();
        openConsole();
        show("Outputs");
    }

    [[nodiscard]] QVLDebugOutputsViewController& outputs() const { return section<QVLDebugOutputsViewController>(); }
};

TEST_F(OutputsSectionTest, OverridesOfOutputsReachTheHostAndCanBeRemoved) {
    EXPECT_THAT(keysOf(outputs().dataSource().tableData()), ElementsAre("banner", "tour"));
    edit(output("banner"), "good day");
    EXPECT_EQ(engine->outputForKey("banner")->stringValue(), "good day");
    tick(output("tour").valueButton());
    EXPECT_FALSE(engine->outputForKey("tour")->boolValue());
    click(output("banner").clearButton());
    EXPECT_EQ(engine->outputForKey("banner")->stringValue(), "hello");
    EXPECT_EQ(engine->outputsOverrides(), (QVLJSONDictionary{{"tour", false}}));
}

TEST_F(OutputsSectionTest, CopyDefaultsKeyTakesTheRowInTheEnginesOwnOrder) {
    QTest::keyClicks(outputs().searchField(), "tour");
    QVLDebugTableView& table = *outputs().tableView();
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(20, 4), QPoint(20, 4));
    QApplication::sendEvent(table.viewport(), &event);
    table.menu()->actions()[0]->trigger();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "QVLQuorvelOverride.output." + engine->outputKeys()[0]);
    table.menu()->close();
}

TEST_F(OutputsSectionTest, DisablingAllOutputsHidesThemAndEnablingShowsThemAgain) {
    tick(outputs().disableCheck());
    EXPECT_TRUE(engine->disableOutputs());
    EXPECT_THAT(outputs().dataSource().tableData(), IsEmpty());
    tick(outputs().disableCheck());
    EXPECT_FALSE(engine->disableOutputs());
    EXPECT_THAT(keysOf(outputs().dataSource().tableData()), ElementsAre("banner", "tour"));
}

TEST_F(OutputsSectionTest, TheSwitchShowsWhatOthersHaveSet) {
    show("Inputs");
    engine->setDisableOutputs(true);
    show("Outputs");
    EXPECT_TRUE(outputs().disableCheck()->isChecked());
}

TEST_F(OutputsSectionTest, TheTableSharesItsMisspeltColumnWithTheJournal) {
    const auto& column = outputs().tableView()->columns()[0];
    EXPECT_EQ(column.identifier, "outpus");
    EXPECT_EQ(column.width, 800);
    EXPECT_EQ(section<QVLDebugJournalViewController>().tableView()->columns()[0].identifier, "outpus");
    EXPECT_EQ(outputs().tableView()->rowHeight(), 32);
}

} // namespace
