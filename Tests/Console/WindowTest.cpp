#include "ConsoleTest.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugValueButton.h"

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QLabel>
#include <QToolBar>
#include <QToolButton>

namespace {

using ::testing::ElementsAre;

class PlainSection final : public QVLDebugSection {
public:
    explicit PlainSection(std::string title) : m_title(std::move(title)) {}

    [[nodiscard]] std::string title() const override { return m_title; }
    [[nodiscard]] QIcon toolbarIcon() const override { return {}; }
    [[nodiscard]] QWidget* view() const override { return m_view.get(); }
    void sectionWillDisplay() override { ++displayCount; }

    int displayCount = 0;

private:
    std::string m_title;
    std::unique_ptr<QWidget> m_view = std::make_unique<QWidget>();
};

using WindowTest = ConsoleTest;

TEST_F(WindowTest, TheToolbarSwitchesBetweenTheFourSectionsAndTitlesTheWindow) {
    openConsole();
    const std::string prefix = std::string(kQVLToolbarIdentifier) + ".";
    EXPECT_THAT(window().toolbarSelectableItemIdentifiers(window().sectionToolbar()),
                ElementsAre(prefix + "Inputs", prefix + "Outputs", prefix + "Journal", prefix + "Scripts"));
    EXPECT_EQ(window().windowTitle(), "Inputs");
    EXPECT_TRUE(window().toolbarItems()[0]->isChecked());
    for (const char* title : {"Scripts", "Journal", "Outputs", "Inputs"}) {
        show(title);
        EXPECT_EQ(window().windowTitle(), title);
        EXPECT_EQ(window().currentSection()->title(), title);
        EXPECT_TRUE(window().currentSection()->view()->isVisible());
        EXPECT_EQ(window().currentSection()->view()->window(), &window());
    }
}

TEST_F(WindowTest, TheSameSectionsChangeNothingAndOthersRebuildTheToolbar) {
    const auto first = std::make_shared<PlainSection>("First");
    const auto second = std::make_shared<PlainSection>("Second");
    QVLDebugWindow plain;
    plain.setSections({first, second});
    const std::vector<QAction*> items = plain.toolbarItems();
    plain.displaySectionAtIndex(1);
    plain.setSections({first, second});
    EXPECT_EQ(plain.toolbarItems(), items);
    EXPECT_EQ(plain.currentSection(), second);

    plain.setSections({second, first});
    EXPECT_EQ(plain.sectionToolbar()->actions().size(), 2);
    EXPECT_EQ(plain.toolbarItems()[0]->text(), "Second");
    EXPECT_EQ(plain.windowTitle(), "Second");
    EXPECT_EQ(second->displayCount, 2);
    EXPECT_EQ(plain.toolbar(plain.sectionToolbar(), "unknown", true), nullptr);
}

TEST_F(WindowTest, EscapeClosesTheWindowAndOtherKeysDoNothing) {
    openConsole();
    QTest::keyClick(&window(), Qt::Key_A);
    QTest::keyClick(section<QVLDebugInputsViewController>().searchField(), Qt::Key_Return);
    EXPECT_TRUE(window().isVisible());
    QTest::keyClick(section<QVLDebugInputsViewController>().searchField(), Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
    controller->showWindow();
    EXPECT_TRUE(window().isVisible());
    QTest::keyClick(section<QVLDebugInputsViewController>().tableView(), Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(WindowTest, TheWindowOpensWithTheSizeThatItLastHad) {
    openConsole();
    window().resize(710, 640);
    controller->close();
    closeConsole();
    openConsole();
    EXPECT_EQ(window().size(), QSize(710, 640));
}

TEST_F(WindowTest, AClosedConsoleObservesNothingAndShowsWhatChangedWhenItReopens) {
    engine->setInputs({{"plan", "free"}});
    openConsole();
    for (const char* title : {"Journal", "Outputs", "Scripts", "Inputs"}) {
        show(title);
    }
    controller->close();
    const int asked = inputsManager->askedCount;
    const std::size_t timerCount = platform.runLoop->timerCount();
    engine->setInputs({{"plan", "team"}});
    engine->journals()->eventForKey("session")->trigger();
    engine->setDisableOutputs(true);
    settle();
    turn();
    EXPECT_EQ(inputsManager->askedCount, asked);
    EXPECT_TRUE(section<QVLDebugJournalViewController>().dataSource().tableData().empty());
    EXPECT_TRUE(window().findChildren<QVLDebugTableCellView*>().isEmpty());
    EXPECT_EQ(platform.runLoop->timerCount(), timerCount);

    controller->showWindow();
    EXPECT_EQ(input("plan").valueButton()->text(), "team");
    EXPECT_THAT(keysOf(section<QVLDebugJournalViewController>().dataSource().tableData()), ElementsAre("session"));
    EXPECT_TRUE(section<QVLDebugOutputsViewController>().disableCheck()->isChecked());
    engine->setInputs({{"plan", "personal"}});
    EXPECT_EQ(input("plan").valueButton()->text(), "personal");
}

TEST_F(WindowTest, ClosingAndReopeningAHundredTimesLeavesNothingBehind) {
    engine->setInputs({{"plan", "free"}, {"count", 1}});
    openConsole();
    qsizetype widgets = 0;
    for (int round = 0; round < 100; ++round) {
        type(input("plan"), "half an edit");
        window().close();
        turn();
        EXPECT_TRUE(round == 0 || widgetCount() == widgets) << round;
        widgets = widgetCount();
        controller->showWindow();
        EXPECT_FALSE(input("plan").isEditing());
    }
}

/// Counts what would end the application.
class QuitCounter final : public QObject {
public:
    QuitCounter() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        count += event->type() == QEvent::Quit ? 1 : 0;
        return false;
    }
    int count = 0;
};

TEST_F(WindowTest, ClosingTheConsoleDoesNotEndTheHost) {
    const QuitCounter quits;
    openConsole();
    controller->close();
    turn();
    EXPECT_EQ(quits.count, 0);
}

TEST_F(WindowTest, NothingOfTheConsoleIsLeftWhenItsControllerIsGone) {
    engine->setInputs({{"plan", "free"}});
    const long useCount = engine.use_count();
    const std::size_t timerCount = platform.runLoop->timerCount();
    const qsizetype widgets = widgetCount();
    for (int round = 0; round < 100; ++round) {
        openConsole();
        show("Scripts");
        closeConsole();
    }
    turn();
    EXPECT_EQ(engine.use_count(), useCount);
    EXPECT_EQ(platform.runLoop->timerCount(), timerCount);
    EXPECT_EQ(widgetCount(), widgets);
    engine->setInputs({{"plan", "team"}});
    engine->journals()->reset();
    settle();
}

TEST_F(WindowTest, TheKeyboardReachesTheSections) {
    openConsole();
    QWidget* const outputs = window().sectionToolbar()->widgetForAction(window().toolbarItems()[1]);
    for (int press = 0; press < 10 && !outputs->hasFocus(); ++press) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &window(), Qt::Key_Tab);
    }
    ASSERT_TRUE(outputs->hasFocus());
    QTest::keyClick(outputs, Qt::Key_Space);
    EXPECT_EQ(window().windowTitle(), "Outputs");
}

struct PaletteRow {
    const char* name;
    QColor text;
    QColor base;
    QColor window;
    double least;
};

class PaletteTest : public ConsoleTest {
protected:
    ~PaletteTest() override { QApplication::setPalette(m_before); }

    static void use(const PaletteRow& row) {
        QPalette palette(row.window, row.window);
        palette.setColor(QPalette::Text, row.text);
        palette.setColor(QPalette::WindowText, row.text);
        palette.setColor(QPalette::ButtonText, row.text);
        palette.setColor(QPalette::Base, row.base);
        QApplication::setPalette(palette);
        turn();
        // Values are drawn anew on the turn after that.
        turn();
    }

private:
    const QPalette m_before = QApplication::palette();
};

TEST_F(PaletteTest, TextsStayReadableWhenThePaletteChanges) {
    engine->setInputs({{"plan", "free"}, {"overridden", 1}});
    engine->setInputsOverrides({{"overridden", 2}});
    openConsole();
    const auto& scripts = section<QVLDebugScriptsViewController>();
    for (const PaletteRow& row : {PaletteRow{"light", Qt::black, Qt::white, QColor(239, 239, 239), 3.4},
                                  {"dark", QColor(238, 238, 238), QColor(42, 42, 42), QColor(53, 53, 53), 4},
                                  {"white on black", Qt::white, Qt::black, Qt::black, 4.5},
                                  {"green on black", Qt::green, Qt::black, Qt::black, 4.5},
                                  {"black on yellow", Qt::black, Qt::yellow, Qt::yellow, 4.5},
                                  {"navy on grey", QColor(0, 0, 80), QColor(200, 200, 200), Qt::lightGray, 4}}) {
        use(row);
        for (const char* key : {"plan", "overridden"}) {
            const auto& button = dynamic_cast<QVLDebugValueButton&>(*input(key).valueButton());
            EXPECT_GE(qvl_contrast(button.textColor(), row.base), row.least) << row.name << ", " << key;
        }
        EXPECT_GT(qvl_contrast(input("overridden").attributedValue().color, row.base),
                  qvl_contrast(input("plan").attributedValue().color, row.base) + 1)
            << row.name;
        const QPalette editor = input("plan").editValueTextField()->palette();
        EXPECT_GE(qvl_contrast(editor.color(QPalette::Text), editor.color(QPalette::Base)), 7) << row.name;
        const QColor version = scripts.versionLabel()->palette().color(QPalette::WindowText);
        EXPECT_GE(qvl_contrast(version, row.window), row.least) << row.name;
        for (const double badge : {0.4, 0.5, 0.6}) {
            const QColor background = qvl_gray(badge, QApplication::palette());
            EXPECT_GE(qvl_contrast(qvl_textColorOn(background), background), 4.5) << row.name;
        }
    }
}

TEST_F(PaletteTest, TheGivenGreysAreThoseOfTheLightPalette) {
    use({"light", Qt::black, Qt::white, QColor(239, 239, 239), 0});
    EXPECT_EQ(qvl_gray(0, QApplication::palette()), QColor(Qt::black));
    EXPECT_EQ(qvl_gray(0.5, QApplication::palette()).red(), 128);
    EXPECT_EQ(qvl_gray(1, QApplication::palette()), QColor(Qt::white));
}

TEST_F(WindowTest, EverySectionHasAnIconThatFollowsThePalette) {
    openConsole();
    const auto darkest = [](const QIcon& icon) {
        const QImage image = icon.pixmap(32, 32).toImage();
        int lightness = 256;
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                const QColor color = image.pixelColor(x, y);
                lightness = color.alpha() == 255 ? std::min(lightness, color.lightness()) : lightness;
            }
        }
        return lightness;
    };
    const QPalette light = QApplication::palette();
    QPalette dark(QColor(50, 50, 50), QColor(40, 40, 40));
    for (const auto& shown : window().sections()) {
        EXPECT_LT(darkest(shown->toolbarIcon()), 128) << shown->title();
        QApplication::setPalette(dark);
        EXPECT_GT(darkest(shown->toolbarIcon()), 128) << shown->title();
        QApplication::setPalette(light);
    }
}

} // namespace
