#include "ConsoleTest.h"

#include "EnvironmentForTests.h"
#include "QVLDebugBadge.h"
#include "QVLScriptManager.h"

#include <gmock/gmock.h>

#include <QLabel>
#include <QPushButton>
#include <QToolButton>

#include <fstream>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The pre-login engine with the library's built-in script, and a nightly feed of two.
class ScriptsSectionTest : public ConsoleTest {
protected:
    ScriptsSectionTest() {
        platform.runLoop->setNow(QVLDebugDateFormatter().dateFromString("2026-11-23 14:30:15").value());
        environment.unlockDebugTools();
        engine = environment->quorvelForPreLogin();
        manager = engine->scriptManager();
    }
    ~ScriptsSectionTest() override {
        closeConsole();
        manager.reset();
    }

    void open() {
        openConsole();
        show("Scripts");
    }
    /// Nightly scripts of these versions, the first of which has a local file.
    void receiveNightlyScripts(const std::vector<std::string>& versions) {
        std::vector<std::shared_ptr<QVLScript>> scripts;
        for (const std::string& version : versions) {
            scripts.push_back(QVLScript::initWithVersion(
                version, QVLDebugDateFormatter().dateFromString("2026-11-20 01:02:03"), "",
                QVLURL::fromString("https://example.com/" + version + ".js"), QVLScriptSourceNightly));
        }
        std::ofstream(manager->localPathForScript(*scripts.front()).value()) << scriptWithBody("return '{}';");
        manager->processNightlyScripts(scripts);
        scripts.front()->setState(QVLScriptStateAvailable);
        QVLNotificationCenter::defaultCenter().post({kQVLScriptManagerDidFetchScriptsNotification, manager, {}});
        turn();
    }
    [[nodiscard]] QVLDebugScriptsViewController& scripts() const { return section<QVLDebugScriptsViewController>(); }
    [[nodiscard]] QVLScriptTableCellView& row(int index) const {
        return dynamic_cast<QVLScriptTableCellView&>(*scripts().tableView()->viewAtRow(index));
    }
    [[nodiscard]] std::string scriptType() const { return scripts().scriptType()->text().toStdString(); }

    EnvironmentForTests environment{directory.path()};
    std::shared_ptr<QVLScriptManager> manager;
};

TEST_F(ScriptsSectionTest, TheStatusFollowsEachRun) {
    open();
    EXPECT_EQ(scripts().versionLabel()->text(), "Unknown");
    EXPECT_EQ(scripts().lastRunDateLabel()->text(), "Unknown");
    EXPECT_EQ(scriptType(), "bundled");
    EXPECT_FALSE(scripts().clearOverrideButton()->isVisible());
    engine->start();
    engine->setInputs({{"appVersion", "4.4.2"}});
    settle();
    EXPECT_EQ(scripts().versionLabel()->text(), "1.0.0");
    EXPECT_EQ(scripts().lastRunDateLabel()->text(), "2026-11-23 14:30:15");
    // A run with the same answer is a run.
    platform.runLoop->setNow(QVLDebugDateFormatter().dateFromString("2026-11-23 14:31:00").value());
    engine->setInputs({{"appVersion", "4.4.2"}});
    settle();
    EXPECT_EQ(scripts().lastRunDateLabel()->text(), "2026-11-23 14:31:00");
}

TEST_F(ScriptsSectionTest, AScriptIsPinnedAndSetFreeAgain) {
    open();
    receiveNightlyScripts({"2.0", "2.1"});
    ASSERT_EQ(scripts().dataSource().numberOfRowsInTableView(), 3);
    EXPECT_EQ(row(0).labelView()->text(), "bundled");
    EXPECT_FALSE(row(0).useButton()->isVisible());
    EXPECT_EQ(row(1).versionLabel()->text(), "2.0");
    EXPECT_FALSE(row(1).labelView()->isVisible());
    click(row(1).useButton());
    settle();
    turn();
    EXPECT_EQ(manager->overrideVersion(), "2.0");
    EXPECT_EQ(scriptType(), "override");
    EXPECT_FALSE(row(1).useButton()->isVisible());
    EXPECT_TRUE(row(0).useButton()->isVisible());
    click(scripts().clearOverrideButton());
    settle();
    EXPECT_EQ(manager->overrideVersion(), std::nullopt);
    EXPECT_EQ(scriptType(), "bundled");
    EXPECT_FALSE(scripts().clearOverrideButton()->isVisible());
}

TEST_F(ScriptsSectionTest, TheButtonFollowsTheStateOfTheScriptAndDownloadsAFailedOneAgain) {
    open();
    receiveNightlyScripts({"2.0", "2.1"});
    const std::shared_ptr<QVLScript> script = row(2).script();
    EXPECT_EQ(row(2).useButton()->text(), "Downloading…");
    EXPECT_FALSE(row(2).useButton()->isEnabled());
    script->setState(QVLScriptStateFailed);
    EXPECT_EQ(row(2).useButton()->text(), "Re-attempt download…");
    click(row(2).useButton());
    EXPECT_EQ(script->state(), QVLScriptStateDownloading);
    script->setState(QVLScriptStateUnknown);
    clearLog();
    click(row(2).useButton());
    EXPECT_THAT(errors(), ElementsAre("Cannot use script '2.1' due to invalid state 0"));
    EXPECT_EQ(manager->overrideVersion(), std::nullopt);
}

TEST_F(ScriptsSectionTest, TheNightlyScriptOfTheRemoteVersionIsTheCurrentRelease) {
    environment->setQuorvelForPreLogin(nullptr);
    environment->setRemoteScriptURL(QVLURL::fromString("https://example.com/rules.js"));
    std::ofstream(environment->remoteScriptFilePath().value()) << scriptWithBody("return '{}';", "2.1");
    engine = environment->quorvelForPreLogin();
    manager = engine->scriptManager();
    open();
    receiveNightlyScripts({"2.0", "2.1"});
    EXPECT_EQ(row(2).labelView()->text(), "current release");
    EXPECT_TRUE(row(2).labelView()->isVisible());
}

TEST_F(ScriptsSectionTest, TheDebugPageIsOpenedOrTheAlertSounds) {
    open();
    click(scripts().debugButton());
    EXPECT_EQ(beepCount, 1);
    engine->start();
    engine->setInputs({{"appVersion", "4.4.2"}});
    manager->setOverrideScript(manager->bundledScript());
    settle();
    click(scripts().debugButton());
    EXPECT_EQ(beepCount, 1);
    ASSERT_EQ(openedFiles.size(), 1U);
    EXPECT_THAT(openedFiles[0], HasSubstr("debug.html"));
}

TEST_F(ScriptsSectionTest, WithoutAManagerThereIsNoScript) {
    engine = QVLQuorvel::initWithDirectory(directory.path("plain"), nullptr, nullptr);
    open();
    EXPECT_EQ(scriptType(), "none");
    EXPECT_FALSE(scripts().clearOverrideButton()->isVisible());
    EXPECT_EQ(scripts().dataSource().rowCount(), 0);
}

} // namespace
