#pragma once

#include "Notes.h"
#include "Rules.h"

#include <Quorvel/QVLDebugWindowController.h>

#include <QMainWindow>

class QListWidget;
class QPlainTextEdit;

/// The application's window: a list of notes and the one being written.
class NotesWindow final : public QMainWindow {
    Q_OBJECT

public:
    NotesWindow();

    void showDebugConsole();

private:
    void addMenus();
    void addItem(const std::string& text);
    void addNote();
    void removeNote();
    void exportNote();
    void showNote(int row);
    void storeText();
    /// The application's state changed.
    void stateChanged();

    Notes m_notes = Notes::load();
    PromptBar* m_bar = nullptr;
    QListWidget* m_list = nullptr;
    QPlainTextEdit* m_editor = nullptr;
    std::unique_ptr<Rules> m_rules;
    std::shared_ptr<QVLDebugWindowController> m_debugConsole;
};
