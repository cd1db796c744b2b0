#pragma once

#include "QVLDebugSection.h"

#include <QMainWindow>

#include <memory>
#include <string>
#include <vector>

class QAction;
class QActionGroup;
class QVBoxLayout;

/// Identifier of the toolbar, and prefix of its items' identifiers.
inline constexpr const char* kQVLToolbarIdentifier = "org.quorvel.debugconsole.debugtoolbar";
/// The property of a toolbar item that holds its identifier.
inline constexpr const char* kQVLIdentifierKeyPath = "itemIdentifier";
/// The key that closes the window, as the toolkit numbers it.
inline constexpr int kQVLEscapeKeyCode = Qt::Key_Escape;

/// Widths of the sections' table columns.
inline constexpr double kQVLInputsViewWidth = 800.0;
inline constexpr double kQVLOutputsViewWidth = 800.0;
inline constexpr double kQVLJournalViewWidth = 800.0;
inline constexpr double kQVLScriptsViewWidth = 800.0;

/// User-defaults key of the size that the user gave the window, an array of width and height.
inline constexpr const char* kQVLDebugWindowSizeKey = "QVLDebugWindowSize";

/// The console's window: a toolbar that switches between sections, and the current section below it. Main thread.
///
/// It opens with the size that it last had, which is kept in the user defaults. While it is closed its sections observe
/// nothing; a window that is only minimised stays up to date. Closing it never ends the application.
class QVLDebugWindow final : public QMainWindow {
    Q_OBJECT

public:
    using Section = std::shared_ptr<QVLDebugSection>;

    QVLDebugWindow();
    ~QVLDebugWindow() override;

    /// In toolbar order.
    [[nodiscard]] const std::vector<Section>& sections() const { return m_sections; }
    /// Shows the first one. The very same sections change nothing.
    void setSections(const std::vector<Section>& sections);
    /// The section on screen, or null.
    [[nodiscard]] Section currentSection() const { return m_currentSection.lock(); }

    /// The section switcher, made on first use.
    [[nodiscard]] QToolBar* sectionToolbar();
    /// One item for each section, made on first use and dropped by `reloadViews`.
    [[nodiscard]] const std::vector<QAction*>& toolbarItems();
    void reloadViews();
    /// Does nothing for an index without a section.
    void displaySectionAtIndex(std::size_t index);
    void toolbarItemClicked(QAction* item);

    /// The item of that identifier, or null.
    [[nodiscard]] QAction* toolbar(QToolBar* toolbar, const std::string& itemForItemIdentifier,
                                   bool willBeInsertedIntoToolbar);
    // The identifiers of all items in section order.
    [[nodiscard]] std::vector<std::string> toolbarAllowedItemIdentifiers(QToolBar* toolbar);
    [[nodiscard]] std::vector<std::string> toolbarDefaultItemIdentifiers(QToolBar* toolbar);
    [[nodiscard]] std::vector<std::string> toolbarSelectableItemIdentifiers(QToolBar* toolbar);

    /// Escape closes the window; every other key is ignored and not passed on.
    void keyDown(QKeyEvent* event);
    /// Moves the window to the middle of its screen; one without a size takes what its section asks for.
    void center();

protected:
    void keyPressEvent(QKeyEvent* event) override { keyDown(event); }
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    [[nodiscard]] QAction* makeToolbarItem(const QVLDebugSection& section);
    void detachCurrentView();
    void restoreSize();
    void saveSize() const;

    std::vector<Section> m_sections;
    std::weak_ptr<QVLDebugSection> m_currentSection;
    QToolBar* m_sectionToolbar = nullptr;
    QActionGroup* m_itemGroup = nullptr;
    std::vector<QAction*> m_toolbarItems;
    QVBoxLayout* m_contentLayout = nullptr;
    bool m_wasClosed = false;
    QSize m_sizeWhenOpened;
};
