#include "SmokeTest.h"

#include "PromptBar.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolBar>

#include <chrono>
#include <cstdlib>
#include <iostream>

using namespace std::chrono_literals;

namespace {

constexpr auto kPause = 50ms;
constexpr int kMostTries = 200;

QAction* actionNamed(const QWidget& window, const QString& text) {
    for (QAction* const action : window.findChildren<QAction*>()) {
        if (action->text().remove('&') == text) {
            return action;
        }
    }
    return nullptr;
}

bool trigger(const QWidget& window, const char* text) {
    QAction* const action = actionNamed(window, text);
    if (action) {
        action->trigger();
    }
    return action != nullptr;
}

} // namespace

SmokeTest::SmokeTest(NotesWindow& window) : m_window(window) {
    addSteps();
    addConsoleSteps();
    m_steps.push_back({"the application is closed", [this] { return m_window.close(); }});
    m_steps.push_back({"the application ends", [] { return false; }});
    connect(&m_timer, &QTimer::timeout, this, &SmokeTest::next);
    m_timer.start(kPause);
}

void SmokeTest::next() {
    if (m_steps[m_current].isDone()) {
        ++m_current;
        m_tries = 0;
    } else if (++m_tries == kMostTries) {
        std::cerr << "FAILED: " << m_steps[m_current].name << "\n";
        std::_Exit(EXIT_FAILURE);
    }
}

void SmokeTest::addSteps() {
    auto* const list = m_window.findChild<QListWidget*>();
    auto* const editor = m_window.findChild<QPlainTextEdit*>();
    auto* const bar = m_window.findChild<PromptBar*>();
    for (const char* const text : {"Shopping\nMilk", "Ideas", "Letters"}) {
        m_steps.push_back({"a note is written", [=, this] {
                               const bool isNew = trigger(m_window, "New");
                               editor->setPlainText(text);
                               return isNew && list->currentItem()->text() == QString(text).section('\n', 0, 0);
                           }});
    }
    m_steps.push_back({"a note is deleted, and the others keep their texts", [=, this] {
                           list->setCurrentRow(2);
                           const bool isDeleted = trigger(m_window, "Delete");
                           list->setCurrentRow(1);
                           return isDeleted && list->count() == 3 && editor->toPlainText() == "Shopping\nMilk";
                       }});
    m_steps.push_back({"the tour is offered", [=] { return bar->isVisible(); }});
    m_steps.push_back({"the tour is accepted", [=] {
                           bar->findChildren<QPushButton*>().front()->click();
                           return !bar->isVisible();
                       }});
}

QWidget* SmokeTest::console() const {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window != &m_window && window->isVisible() && window->findChild<QToolBar*>()) {
            return window;
        }
    }
    return nullptr;
}

void SmokeTest::addConsoleSteps() {
    for (int round = 0; round < 2; ++round) {
        m_steps.push_back({"the debug console opens", [this] { return trigger(m_window, "Debug Console"); }});
        for (const char* const section : {"Outputs", "Journal", "Scripts", "Inputs"}) {
            m_steps.push_back({section, [this, section] {
                                   QWidget* const window = console();
                                   return window && trigger(*window, section) && window->windowTitle() == section;
                               }});
        }
        m_steps.push_back({"Escape closes the debug console", [this] {
                               QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
                               QApplication::sendEvent(console(), &escape);
                               return console() == nullptr;
                           }});
    }
}
