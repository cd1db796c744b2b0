#include "ConsoleTest.h"

#include <QToolBar>
#include <QToolButton>

ConsoleTest::ConsoleTest() {
    QVLDebugDesktop& desktop = QVLDebugDesktop::current();
    desktop.beep = [this] { ++beepCount; };
    desktop.openFile = [this](const std::string& path) { openedFiles.push_back(path); };
}

ConsoleTest::~ConsoleTest() {
    closeConsole();
    turn();
    QVLDebugDesktop::current() = QVLDebugDesktop::native();
}

void ConsoleTest::openConsole() {
    controller = QVLDebugWindowController::initWithQuorvel(engine, inputsManager);
    for (QAbstractItemModel* const model :
         std::initializer_list<QAbstractItemModel*>{&section<QVLDebugInputsViewController>().dataSource(),
                                                    &section<QVLDebugOutputsViewController>().dataSource(),
                                                    &section<QVLDebugJournalViewController>().dataSource(),
                                                    &section<QVLDebugScriptsViewController>().dataSource()}) {
        modelTesters.push_back(
            std::make_unique<QAbstractItemModelTester>(model, QAbstractItemModelTester::FailureReportingMode::Fatal));
    }
    controller->showWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(controller->window()));
}

void ConsoleTest::closeConsole() {
    modelTesters.clear();
    controller.reset();
}

void ConsoleTest::show(const char* title) {
    for (QAction* const item : window().toolbarItems()) {
        if (item->text() == title) {
            click(window().sectionToolbar()->widgetForAction(item));
        }
    }
    turn();
}

void ConsoleTest::type(QVLDebugValueView& view, const char* text) {
    click(view.valueButton());
    ASSERT_TRUE(view.isEditing());
    QTest::keyClick(view.editValueTextField(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(view.editValueTextField(), Qt::Key_Delete);
    QTest::keyClicks(view.editValueTextField(), QString::fromUtf8(text));
}

void ConsoleTest::edit(QVLDebugValueView& view, const char* text) {
    type(view, text);
    QTest::keyClick(view.editValueTextField(), Qt::Key_Return);
}

std::vector<std::string> ConsoleTest::keysOf(const QVLDebugRows& rows) {
    std::vector<std::string> keys;
    for (const auto& row : rows) {
        keys.push_back(row->key());
    }
    return keys;
}

void ConsoleTest::turn() {
    QApplication::processEvents();
}
