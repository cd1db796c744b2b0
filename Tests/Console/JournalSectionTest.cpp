#include "ConsoleTest.h"

#include "QVLDebugDataView.h"
#include "QVLDebugJournalDataSource.h"
#include "QVLDebugJournalTableCellView.h"

#include <gmock/gmock.h>

#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class JournalSectionTest : public ConsoleTest {
protected:
    JournalSectionTest() {
        platform.runLoop->setNow(QVLDebugDateFormatter().dateFromString("2026-11-23 14:30:15").value());
        engine->journals()->eventForKey("session")->trigger();
        engine->journals()->flagForKey("tour")->updateFlag(true);
        static_cast<void>(engine->journals()->eventForKey("empty"));
        openConsole();
        show("Journal");
    }

    [[nodiscard]] QVLDebugJournalViewController& journal() const { return section<QVLDebugJournalViewController>(); }
    [[nodiscard]] QVLDebugJournalTableCellView& row(const char* key) const {
        return cell<QVLDebugJournalTableCellView>(journal(), key);
    }
    [[nodiscard]] QVLDebugValueView& field(const char* key, const char* name) const {
        for (const QVLDebugDataView* const view : row(key).fieldViews()) {
            if (view->dataName() == name) {
                return *view->valueView();
            }
        }
        throw std::logic_error(std::string("no field ") + name);
    }
    [[nodiscard]] std::string textOf(const char* key, const char* name) const {
        return field(key, name).valueButton()->text().toStdString();
    }
    [[nodiscard]] std::shared_ptr<QVLJournalEvent> session() const {
        return engine->journals()->eventForKey("session");
    }
};

TEST_F(JournalSectionTest, ListsWhatIsNotEmptyWithItsFields) {
    EXPECT_THAT(keysOf(journal().dataSource().tableData()), ElementsAre("session", "tour"));
    EXPECT_EQ(row("session").keyLabel()->text(), "Event: session");
    EXPECT_EQ(row("tour").keyLabel()->text(), "Flag: tour");
    EXPECT_EQ(textOf("session", "First time"), "2026-11-23 14:30:15");
    EXPECT_EQ(textOf("session", "Last time"), "2026-11-23 14:30:15");
    EXPECT_EQ(textOf("session", "Count"), "1");
    EXPECT_TRUE(field("tour", "Flag").valueButton()->isChecked());
    QTest::keyClicks(journal().searchField(), "e");
    EXPECT_THAT(keysOf(journal().dataSource().tableData()), ElementsAre("session"));
}

TEST_F(JournalSectionTest, EditsChangeTheRecordAndLeaveNoOverrideBehind) {
    edit(field("session", "Count"), "7");
    EXPECT_EQ(session()->count(), 7U);
    EXPECT_EQ(textOf("session", "Count"), "7");
    EXPECT_FALSE(field("session", "Count").clearButton()->isVisible());
    edit(field("session", "First time"), "2 days ago");
    EXPECT_EQ(textOf("session", "First time"), "2026-11-21 14:30:15");
    edit(field("session", "Last time"), "2026-11-22 08:00:00");
    EXPECT_EQ(QVLDebugDateFormatter().stringFromDate(session()->lastTime().value()), "2026-11-22 08:00:00");
    tick(field("tour", "Flag").valueButton());
    EXPECT_FALSE(engine->journals()->flagForKey("tour")->flag());
    edit(field("session", "Count"), "-3");
    EXPECT_EQ(session()->count(), 0U);
    edit(field("session", "Count"), "7");
    // What a record holds already changes nothing, and must not look like an override either.
    edit(field("session", "Count"), "7");
    EXPECT_FALSE(field("session", "Count").clearButton()->isVisible());
}

TEST_F(JournalSectionTest, ANewOccurrenceShowsAtOnceAndKeepsAnEditGoing) {
    type(field("session", "First time"), "yester");
    session()->trigger();
    EXPECT_EQ(textOf("session", "Count"), "2");
    EXPECT_TRUE(field("session", "First time").isEditing());
    QTest::keyClicks(field("session", "First time").editValueTextField(), "day");
    QTest::keyClick(field("session", "First time").editValueTextField(), Qt::Key_Return);
    EXPECT_EQ(textOf("session", "First time"), "2026-11-22 14:30:15");
}

TEST_F(JournalSectionTest, ResetEmptiesOneRecordAndResetJournalsAllOfThem) {
    click(row("session").resetButton());
    turn();
    EXPECT_TRUE(session()->isEmpty());
    EXPECT_THAT(keysOf(journal().dataSource().tableData()), ElementsAre("tour"));
    click(journal().resetButton());
    EXPECT_THAT(journal().dataSource().tableData(), IsEmpty());
    EXPECT_THAT(engine->journals()->allFlagKeys(), IsEmpty());
}

TEST_F(JournalSectionTest, AKeyOfAnEventAndAFlagHasTwoRows) {
    engine->journals()->eventForKey("tour")->trigger();
    EXPECT_THAT(keysOf(journal().dataSource().tableData()), ElementsAre("session", "tour", "tour"));
    const auto& dataSource = static_cast<QVLDebugJournalDataSource&>(journal().dataSource());
    EXPECT_THAT(dataSource.allJournalsKeys(), ElementsAre("empty", "session", "tour"));
}

} // namespace
