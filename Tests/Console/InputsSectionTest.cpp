#include "ConsoleTest.h"

#include "QVLDebugInputsTableCellView.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InputsSectionTest : public ConsoleTest {
protected:
    InputsSectionTest() {
        engine->setInputs({{"plan", "free"},
                           {"count", 3},
                           {"isOffline", false},
                           {"limits", QVLJSONDictionary{{"a", 1}}},
                           {"nothing", nullptr}});
        inputsManager->times["plan"] = 0.00123;
        openConsole();
    }

    [[nodiscard]] QVLDebugInputsViewController& inputs() const { return section<QVLDebugInputsViewController>(); }
    [[nodiscard]] QColor colorOf(const char* key) const { return input(key).attributedValue().color; }
    /// Asks for the menu of the row, or of the empty space below the rows, and chooses its item.
    void copyDefaultsKey(int row) const {
        QVLDebugTableView& table = *inputs().tableView();
        const int y = row < 0 ? table.viewport()->height() - 1 : table.rowViewportPosition(row) + 4;
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(20, y), QPoint(20, y));
        QApplication::sendEvent(table.viewport(), &event);
        ASSERT_TRUE(table.menu()->isVisible());
        QTest::keyClick(table.menu(), Qt::Key_Down);
        QTest::keyClick(table.menu(), Qt::Key_Return);
    }

    const QColor black{0, 0, 0};
};

TEST_F(InputsSectionTest, AnOverrideThatIsTypedReachesTheEngineTurnsBlackAndCanBeRemoved) {
    EXPECT_EQ(colorOf("plan").lightness(), 128);
    edit(input("plan"), "42");
    // A text stays a text.
    EXPECT_EQ(engine->inputsOverrides(), (QVLJSONDictionary{{"plan", "42"}}));
    EXPECT_EQ(engine->inputForKey("plan"), QVLJSONValue("42"));
    EXPECT_EQ(input("plan").valueButton()->text(), "42");
    EXPECT_EQ(colorOf("plan"), black);
    EXPECT_TRUE(input("plan").clearButton()->isVisible());

    click(input("plan").clearButton());
    EXPECT_TRUE(engine->inputsOverrides().isEmpty());
    EXPECT_EQ(input("plan").valueButton()->text(), "free");
    EXPECT_NE(colorOf("plan"), black);
    EXPECT_FALSE(input("plan").clearButton()->isVisible());
}

TEST_F(InputsSectionTest, AnEmptyEditIsANullOverride) {
    edit(input("count"), "");
    EXPECT_TRUE(engine->inputForKey("count").isNull());
    EXPECT_EQ(input("count").valueButton()->text(), "null value");
    EXPECT_EQ(colorOf("count"), black);
    click(input("count").clearButton());
    EXPECT_EQ(engine->inputForKey("count"), QVLJSONValue(3));
}

TEST_F(InputsSectionTest, NumbersAndJSONAreReadAndTextThatDoesNotParseRemovesTheOverride) {
    edit(input("count"), "12");
    edit(input("limits"), "[1, {\"b\": true}]");
    EXPECT_EQ(engine->inputForKey("count"), QVLJSONValue(12));
    EXPECT_EQ(engine->inputForKey("limits"), QVLJSONValue(QVLJSONArray{1, QVLJSONDictionary{{"b", true}}}));
    edit(input("count"), "a dozen");
    edit(input("limits"), "[1,");
    EXPECT_TRUE(engine->inputsOverrides().isEmpty());
}

TEST_F(InputsSectionTest, ACheckboxOverridesABoolean) {
    EXPECT_EQ(input("isOffline").valueButtonAlpha(), 0.5);
    tick(input("isOffline").valueButton());
    EXPECT_FALSE(input("isOffline").isEditing());
    EXPECT_TRUE(engine->inputForKey("isOffline").isBoolean());
    EXPECT_EQ(engine->inputForKey("isOffline"), QVLJSONValue(true));
    EXPECT_EQ(input("isOffline").valueButtonAlpha(), 1.0);
    tick(input("isOffline").valueButton());
    // Equal to the value and announced by nobody, yet still an override.
    EXPECT_EQ(engine->inputsOverrides().valueForKey("isOffline"), QVLJSONValue(false));
    EXPECT_TRUE(input("isOffline").clearButton()->isVisible());
}

TEST_F(InputsSectionTest, AnOverrideThatDiffersFromTheLastInABooleanInsideIsWritten) {
    edit(input("limits"), "[true]");
    edit(input("limits"), "[1]");
    EXPECT_EQ(input("limits").valueButton()->text(), "[1]");
    EXPECT_FALSE(engine->inputForKey("limits").arrayOrEmpty().valueAtIndex(0).isBoolean());
    edit(input("limits"), "");
    EXPECT_EQ(input("limits").valueButton()->text(), "null value");
}

TEST_F(InputsSectionTest, ValuesAreShownAndEditedAsTheyAreHoweverLongAndStrange) {
    const std::string value = "<b>AT&T</b>\n" + std::string(100'000, 'x');
    engine->setInputs({{"plan", value}});
    EXPECT_TRUE(input("plan").valueButton()->shortcut().isEmpty());
    EXPECT_THAT(input("plan").valueButton()->toolTip().toStdString(), ::testing::HasSubstr("&lt;b&gt;AT&amp;T"));
    click(input("plan").valueButton());
    QTest::keyClick(input("plan").editValueTextField(), Qt::Key_Return);
    EXPECT_EQ(engine->inputsOverrides().valueForKey("plan"), QVLJSONValue(value));
}

TEST_F(InputsSectionTest, EscapeAndLosingTheFocusEndAnEditWithoutAChange) {
    type(input("plan"), "team");
    QTest::keyClick(input("plan").editValueTextField(), Qt::Key_Escape);
    EXPECT_FALSE(input("plan").isEditing());
    EXPECT_TRUE(window().isVisible());
    type(input("plan"), "team");
    inputs().searchField()->setFocus();
    EXPECT_FALSE(input("plan").isEditing());
    EXPECT_TRUE(engine->inputsOverrides().isEmpty());
}

TEST_F(InputsSectionTest, TheKeyboardWalksThroughTheRowsAndEdits) {
    input("isOffline").valueButton()->setFocus();
    QTest::keyClick(input("isOffline").valueButton(), Qt::Key_Space);
    EXPECT_EQ(engine->inputForKey("isOffline"), QVLJSONValue(true));
    QTest::keyClick(input("isOffline").valueButton(), Qt::Key_Tab);
    EXPECT_TRUE(input("isOffline").clearButton()->hasFocus());
    QTest::keyClick(input("isOffline").clearButton(), Qt::Key_Tab);
    EXPECT_TRUE(input("limits").valueButton()->hasFocus());
    QTest::keyClick(input("limits").valueButton(), Qt::Key_Return);
    // Return that is held down does not commit what nobody has typed,
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, {}, "\r", /*autorep=*/true);
    QApplication::sendEvent(input("limits").editValueTextField(), &repeated);
    EXPECT_TRUE(input("limits").isEditing());
    QTest::keyClicks(input("limits").editValueTextField(), "[]");
    QTest::keyClick(input("limits").editValueTextField(), Qt::Key_Return);
    EXPECT_EQ(engine->inputForKey("limits"), QVLJSONValue(QVLJSONArray()));
    EXPECT_FALSE(input("limits").isEditing());
    EXPECT_TRUE(input("limits").valueButton()->hasFocus());
    // and does not begin the next edit.
    QApplication::sendEvent(input("limits").valueButton(), &repeated);
    EXPECT_FALSE(input("limits").isEditing());
    QTest::keyClick(input("limits").valueButton(), Qt::Key_Tab);
    QTest::keyClick(input("limits").clearButton(), Qt::Key_Space);
    EXPECT_TRUE(input("limits").valueButton()->hasFocus());
    EXPECT_TRUE(engine->inputForKey("limits").isDictionary());
}

TEST_F(InputsSectionTest, AChangeOfTheInputsKeepsWhatIsBeingTyped) {
    type(input("plan"), "tea");
    engine->setInputs({{"plan", "personal"}, {"count", 4}});
    turn();
    EXPECT_TRUE(input("plan").isEditing());
    QTest::keyClicks(input("plan").editValueTextField(), "m");
    QTest::keyClick(input("plan").editValueTextField(), Qt::Key_Return);
    EXPECT_EQ(engine->inputForKey("plan"), QVLJSONValue("team"));
    EXPECT_EQ(input("count").valueButton()->text(), "4");
}

TEST_F(InputsSectionTest, SearchingShowsTheKeysThatContainTheText) {
    EXPECT_THAT(keysOf(inputs().dataSource().tableData()),
                ElementsAre("count", "isOffline", "limits", "nothing", "plan"));
    QTest::keyClicks(inputs().searchField(), "LI");
    EXPECT_THAT(keysOf(inputs().dataSource().tableData()), ElementsAre("isOffline", "limits"));
    EXPECT_EQ(inputs().tableView()->viewCount(), 2);
    inputs().searchField()->clear();
    EXPECT_EQ(inputs().dataSource().numberOfRowsInTableView(), 5);
}

TEST_F(InputsSectionTest, CopyDefaultsKeyTakesTheRowInTheListOfAllKeys) {
    QTest::keyClicks(inputs().searchField(), "plan");
    turn();
    copyDefaultsKey(0);
    EXPECT_EQ(QApplication::clipboard()->text(), "QVLQuorvelOverride.input.count");
    EXPECT_EQ(beepCount, 0);
}

TEST_F(InputsSectionTest, CopyDefaultsKeyWithoutARowBeepsAndLeavesTheClipboardAlone) {
    QApplication::clipboard()->setText("before");
    copyDefaultsKey(-1);
    EXPECT_EQ(beepCount, 1);
    EXPECT_EQ(QApplication::clipboard()->text(), "before");
}

TEST_F(InputsSectionTest, GenerationTimesAreShownAndFollowTheInputs) {
    EXPECT_EQ(inputs().generationTimeLabel()->text(), "Inputs generated in 0.012 (0.500) seconds");
    const auto& row = cell<QVLDebugInputsTableCellView>(inputs(), "plan");
    EXPECT_EQ(row.generationTimeLabel()->text(), "0.0012s");
    click(inputs().reloadButton());
    EXPECT_EQ(inputsManager->updateCount, 1);
    inputsManager->mainThreadTime = 2;
    engine->setInputs({{"plan", "team"}});
    EXPECT_EQ(inputs().generationTimeLabel()->text(), "Inputs generated in 2.000 (0.500) seconds");
}

TEST_F(InputsSectionTest, LogDataLogsTheEnginesState) {
    clearLog();
    click(inputs().logButton());
    EXPECT_EQ(messages(QVLLogLevelInfo).size(), 3U);
}

TEST_F(InputsSectionTest, TheModelGivesKeysAndTheTextsOfValues) {
    const QAbstractItemModel& model = inputs().dataSource();
    EXPECT_EQ(model.index(0, 0).data().toString(), "count");
    EXPECT_EQ(model.index(0, 0).data(QVLDebugDataSource::ValueRole).toString(), "3");
    EXPECT_EQ(model.headerData(0, Qt::Horizontal).toString(), "Inputs");
}

class ManyInputsTest : public InputsSectionTest {
protected:
    ManyInputsTest() {
        // It looks at every row.
        modelTesters.clear();
        std::vector<QVLJSONDictionary::Entry> many;
        for (int number = 100'000; number < 200'000; ++number) {
            many.push_back({"key" + std::to_string(number), number});
        }
        engine->setInputs(QVLJSONDictionary(std::move(many)));
        turn();
    }

    [[nodiscard]] QVLDebugTableView& table() const { return *inputs().tableView(); }
};

TEST_F(ManyInputsTest, AHundredThousandRowsHaveViewsForTheVisibleOnesOnly) {
    const auto onScreen = static_cast<std::size_t>(table().viewport()->height() / table().rowHeight() + 4);
    EXPECT_LE(static_cast<std::size_t>(table().viewCount()), onScreen);
    const std::size_t before = table().madeViewCount();
    table().verticalScrollBar()->setValue(table().verticalScrollBar()->maximum());
    EXPECT_EQ(cell<QVLDebugTableCellView>(inputs(), "key199999").valueView()->valueButton()->text(), "199999");
    const int position = table().verticalScrollBar()->value();
    engine->setInputsOverrides({{"key100000", 1}});
    EXPECT_EQ(table().verticalScrollBar()->value(), position);
    EXPECT_LE(table().madeViewCount() - before, onScreen);
    QTest::keyClicks(inputs().searchField(), "77777");
    EXPECT_THAT(keysOf(inputs().dataSource().tableData()), ElementsAre("key177777"));
    EXPECT_LE(table().madeViewCount() - before, 6 * onScreen);
    turn();
    EXPECT_LE(table().findChildren<QVLDebugTableCellView*>().size(), static_cast<qsizetype>(onScreen));
}

TEST_F(ManyInputsTest, AnEditSurvivesScrollingAndItsArrowKeysDoNotScroll) {
    type(input("key100001"), "12");
    QTest::keyClick(input("key100001").editValueTextField(), Qt::Key_Down);
    EXPECT_EQ(table().verticalScrollBar()->value(), 0);
    table().verticalScrollBar()->setValue(500'000);
    engine->setInputs(engine->inputs().withValueForKey(1, "a"));
    turn();
    QTest::keyClick(input("key100001").editValueTextField(), Qt::Key_Return);
    EXPECT_EQ(engine->inputForKey("key100001"), QVLJSONValue(12));
    // With the focus elsewhere the row is like all others.
    inputs().searchField()->setFocus();
    table().verticalScrollBar()->setValue(600'000);
    EXPECT_EQ(table().viewAtRow(2), nullptr);
}

TEST_F(ManyInputsTest, TabWalksOnBelowTheVisibleRows) {
    input("key100000").valueButton()->setFocus();
    for (int number = 100'001; number < 100'040; ++number) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        ASSERT_TRUE(input("key" + std::to_string(number)).valueButton()->hasFocus()) << number;
        EXPECT_FALSE(input("key" + std::to_string(number)).visibleRegion().isEmpty());
    }
    // And back into the table from below it.
    inputs().tableView()->verticalScrollBar()->setValue(0);
    inputs().reloadButton()->setFocus();
    QTest::keyClick(inputs().reloadButton(), Qt::Key_Backtab, Qt::ShiftModifier);
    const QWidget* const focused = QApplication::focusWidget();
    ASSERT_TRUE(inputs().tableView()->viewport()->isAncestorOf(focused));
    EXPECT_FALSE(focused->visibleRegion().isEmpty());
}

class BadDataSource final : public QVLDebugDataSource {
public:
    BadDataSource(QVLDebugTableView* table, const std::shared_ptr<QVLQuorvel>& quorvel) {
        initWithTableView(table, quorvel);
    }
    [[nodiscard]] QVLDebugTableCellViewClass tableCellViewClass() const override {
        return [](const std::shared_ptr<QVLQuorvel>&) { return new QWidget; };
    }
    void reloadData() override { updateCachedValues({QVLDebugDataSourceObject::initWithKey("a", {}, {})}); }
    void startObservingChanges() override {}
};

TEST_F(InputsSectionTest, AClassOfCellsWithoutTheProtocolIsAsserted) {
    const std::unique_ptr<QVLDebugTableView> table(QVLDebugTableView::tableViewWithFrame({}, {}));
    BadDataSource dataSource(table.get(), engine);
    clearLog();
    const std::unique_ptr<QWidget> view(dataSource.viewForTableColumn(0, 0));
    ASSERT_EQ(errors().size(), 1U);
    EXPECT_THAT(errors()[0], ::testing::HasSubstr("Bad cell class"));
}

} // namespace
