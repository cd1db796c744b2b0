#include "NotesWindow.h"

#include <QFileDialog>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QSplitter>
#include <QVBoxLayout>

#include <fstream>

namespace {

/// The beginning of a note's first line.
QString titleOf(const QString& text) {
    constexpr int kLongest = 40;
    const QString title = text.section('\n', 0, 0).left(kLongest);
    return title.isEmpty() ? "New Note" : title;
}

} // namespace

NotesWindow::NotesWindow() {
    setWindowTitle("Notes");
    auto* const content = new QWidget(this);
    auto* const layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    m_bar = new PromptBar(content);
    auto* const splitter = new QSplitter(content);
    m_list = new QListWidget(splitter);
    m_editor = new QPlainTextEdit(splitter);
    splitter->setSizes({200, 500});
    layout->addWidget(m_bar);
    layout->addWidget(splitter, 1);
    setCentralWidget(content);
    resize(720, 440);

    m_rules = std::make_unique<Rules>(m_notes, *m_bar);
    addMenus();
    connect(m_list, &QListWidget::currentRowChanged, this, &NotesWindow::showNote);
    connect(m_editor, &QPlainTextEdit::textChanged, this, &NotesWindow::storeText);
    for (const std::string& text : m_notes.texts) {
        addItem(text);
    }
    if (m_notes.texts.empty()) {
        m_notes.texts.emplace_back();
        addItem("");
    }
    m_rules->start();
}

void NotesWindow::addMenus() {
    QMenu* const note = menuBar()->addMenu("&Note");
    note->addAction("&New", QKeySequence::New, this, [this] {
        addNote();
        m_rules->record("document.created");
    });
    note->addAction("&Export…", QKeySequence::Save, this, &NotesWindow::exportNote);
    note->addAction("&Delete", this, &NotesWindow::removeNote);
    note->addSeparator();
    note->addAction("&Quit", QKeySequence::Quit, this, &QWidget::close);

    QMenu* const view = menuBar()->addMenu("&View");
    QAction* const present = view->addAction("&Present");
    present->setCheckable(true);
    connect(present, &QAction::toggled, this, [this](bool isOn) {
        m_notes.isPresenting = isOn;
        stateChanged();
    });

    // The key file may come and go while the application runs.
    QMenu* const help = menuBar()->addMenu("&Help");
    QAction* const console = help->addAction("&Debug Console", this, &NotesWindow::showDebugConsole);
    connect(help, &QMenu::aboutToShow, this,
            [console] { console->setVisible(QVLQuorvelEnvironment::sharedEnvironment()->debugToolsAvailable()); });
}

void NotesWindow::showDebugConsole() {
    if (!m_debugConsole) {
        m_debugConsole = QVLDebugWindowController::initWithQuorvel(m_rules->engine(), m_rules->inputs());
    }
    m_debugConsole->showWindow();
}

void NotesWindow::stateChanged() {
    m_notes.save();
    m_rules->stateChanged();
}

void NotesWindow::addItem(const std::string& text) {
    m_list->addItem(titleOf(QString::fromStdString(text)));
    m_list->setCurrentRow(m_list->count() - 1);
    m_editor->setFocus();
}

void NotesWindow::addNote() {
    m_notes.texts.emplace_back();
    addItem("");
    stateChanged();
}

void NotesWindow::removeNote() {
    const int row = m_list->currentRow();
    if (row < 0) {
        return;
    }
    {
        // Texts and items have to agree again before the next note is shown.
        const QSignalBlocker quiet(m_list);
        delete m_list->takeItem(row);
        m_notes.texts.erase(m_notes.texts.begin() + row);
    }
    showNote(m_list->currentRow());
    stateChanged();
}

void NotesWindow::exportNote() {
    const QString path = QFileDialog::getSaveFileName(this, "Export", "note.txt");
    if (path.isEmpty()) {
        return;
    }
    std::ofstream file(path.toStdString());
    file << m_editor->toPlainText().toStdString() << std::flush;
    if (!file) {
        QMessageBox::warning(this, "Export", "The note could not be written to " + path + ".");
        return;
    }
    ++m_notes.exportsThisMonth;
    stateChanged();
}

void NotesWindow::showNote(int row) {
    const bool isNote = row >= 0 && row < static_cast<int>(m_notes.texts.size());
    m_editor->setEnabled(isNote);
    m_editor->setPlainText(isNote ? QString::fromStdString(m_notes.texts[static_cast<std::size_t>(row)]) : QString());
}

void NotesWindow::storeText() {
    const int row = m_list->currentRow();
    if (row < 0 || !m_editor->isEnabled()) {
        return;
    }
    const QString text = m_editor->toPlainText();
    m_notes.texts[static_cast<std::size_t>(row)] = text.toStdString();
    m_list->item(row)->setText(titleOf(text));
    m_notes.save();
}
