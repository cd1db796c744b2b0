#include "ConsoleTest.h"

#include "QVLDebugAppearance.h"

#include <gmock/gmock.h>

#include <QApplication>
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

TEST_F(WindowTest, NothingOfTheConsoleIsLeftWhenItsControllerIsGone) {
    engine->setInputs({{"plan", "free"}});
    const long useCount = engine.use_count();
    const std::size_t timerCount = platform.runLoop->timerCount();
    for (int round = 0; round < 100; ++round) {
        openConsole();
        show("Scripts");
        closeConsole();
    }
    turn();
    EXPECT_EQ(engine.use_count(), useCount);
    EXPECT_EQ(platform.runLoop->timerCount(), timerCount);
    EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
    engine->setInputs({{"plan", "team"}});
    engine->journals()->reset();
    settle();
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
