#include "QVLDebugWindow.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugText.h"
#include "QVLUserDefaults.h"

#include <QActionGroup>
#include <QKeyEvent>
#include <QScreen>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kIconSize = 32;
constexpr Qt::WindowFlags kStyle = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint;

std::string identifierOf(const QAction& item) {
    return qvl_text(item.property(kQVLIdentifierKeyPath).toString());
}

} // namespace

QVLDebugWindow::QVLDebugWindow() {
    setWindowFlags(kStyle);
    // It is the host's main window whose closing ends the application, or nothing of Qt's at all.
    setAttribute(Qt::WA_QuitOnClose, false);
    setObjectName("QVLDebugWindow");
    auto* const content = new QWidget(this);
    m_contentLayout = new QVBoxLayout(content);
    m_contentLayout->setContentsMargins(0, 0, 0, 0);
    setCentralWidget(content);
    addToolBar(sectionToolbar());
    restoreSize();
}

QVLDebugWindow::~QVLDebugWindow() {
    // One that goes while it is open is not told that it is hidden.
    if (isVisible() && size() != m_sizeWhenOpened) {
        saveSize();
    }
    // The views are their sections'.
    detachCurrentView();
}

QToolBar* QVLDebugWindow::sectionToolbar() {
    if (m_sectionToolbar) {
        return m_sectionToolbar;
    }
    m_sectionToolbar = new QToolBar(this);
    m_sectionToolbar->setObjectName(kQVLToolbarIdentifier);
    m_sectionToolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_sectionToolbar->setIconSize({kIconSize, kIconSize});
    // It can be neither moved, nor hidden, nor customised.
    m_sectionToolbar->setMovable(false);
    m_sectionToolbar->setFloatable(false);
    m_sectionToolbar->toggleViewAction()->setVisible(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    m_itemGroup = new QActionGroup(this);
    connect(m_sectionToolbar, &QToolBar::actionTriggered, this, &QVLDebugWindow::toolbarItemClicked);
    return m_sectionToolbar;
}

const std::vector<QAction*>& QVLDebugWindow::toolbarItems() {
    if (m_toolbarItems.empty()) {
        for (const Section& section : m_sections) {
            m_toolbarItems.push_back(makeToolbarItem(*section));
        }
    }
    return m_toolbarItems;
}

QAction* QVLDebugWindow::makeToolbarItem(const QVLDebugSection& section) {
    const QString title = qvl_text(section.title());
    auto* const item = new QAction(section.toolbarIcon(), title, this);
    item->setProperty(kQVLIdentifierKeyPath, kQVLToolbarIdentifier + ("." + title));
    item->setCheckable(true);
    m_itemGroup->addAction(item);
    return item;
}

QAction* QVLDebugWindow::toolbar(QToolBar* /*toolbar*/, const std::string& itemForItemIdentifier,
                                 bool /*willBeInsertedIntoToolbar*/) {
    const std::vector<QAction*>& items = toolbarItems();
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&](QAction* item) { return identifierOf(*item) == itemForItemIdentifier; });
    return found == items.end() ? nullptr : *found;
}

std::vector<std::string> QVLDebugWindow::toolbarAllowedItemIdentifiers(QToolBar* /*toolbar*/) {
    std::vector<std::string> identifiers;
    for (const QAction* const item : toolbarItems()) {
        identifiers.push_back(identifierOf(*item));
    }
    return identifiers;
}

std::vector<std::string> QVLDebugWindow::toolbarDefaultItemIdentifiers(QToolBar* toolbar) {
    return toolbarAllowedItemIdentifiers(toolbar);
}

std::vector<std::string> QVLDebugWindow::toolbarSelectableItemIdentifiers(QToolBar* toolbar) {
    return toolbarAllowedItemIdentifiers(toolbar);
}

void QVLDebugWindow::setSections(const std::vector<Section>& sections) {
    if (sections == m_sections) {
        return;
    }
    detachCurrentView();
    m_sections = sections;
    reloadViews();
}

void QVLDebugWindow::reloadViews() {
    for (QAction* const item : std::exchange(m_toolbarItems, {})) {
        sectionToolbar()->removeAction(item);
        qvl_deleteLater(*item);
    }
    for (const std::string& identifier : toolbarDefaultItemIdentifiers(sectionToolbar())) {
        QAction* const item = toolbar(sectionToolbar(), identifier, /*willBeInsertedIntoToolbar=*/true);
        sectionToolbar()->addAction(item);
        // Toolbars keep their buttons from the keyboard.
        sectionToolbar()->widgetForAction(item)->setFocusPolicy(Qt::TabFocus);
    }
    displaySectionAtIndex(0);
}

void QVLDebugWindow::toolbarItemClicked(QAction* item) {
    const std::vector<QAction*>& items = toolbarItems();
    const auto found = std::find(items.begin(), items.end(), item);
    displaySectionAtIndex(static_cast<std::size_t>(found - items.begin()));
}

void QVLDebugWindow::displaySectionAtIndex(std::size_t index) {
    if (index >= m_sections.size()) {
        return;
    }
    const Section section = m_sections[index];
    setWindowTitle(qvl_text(section->title()));
    section->sectionWillDisplay();
    detachCurrentView();
    m_contentLayout->addWidget(section->view());
    section->view()->show();
    m_currentSection = section;
    toolbarItems()[index]->setChecked(true);
}

void QVLDebugWindow::detachCurrentView() {
    if (const Section current = currentSection()) {
        m_contentLayout->removeWidget(current->view());
        current->view()->setParent(nullptr);
    }
    m_currentSection.reset();
}

void QVLDebugWindow::keyDown(QKeyEvent* event) {
    event->accept();
    if (event->key() == kQVLEscapeKeyCode) {
        close();
    }
}

void QVLDebugWindow::center() {
    if (!screen()) {
        return;
    }
    const QRect available = screen()->availableGeometry();
    if (!testAttribute(Qt::WA_Resized)) {
        resize(sizeHint().boundedTo(available.size()));
    }
    move(available.center() - rect().center());
}

void QVLDebugWindow::restoreSize() {
    const QVLJSONArray size =
        QVLUserDefaults::standardUserDefaults()->objectForKey(kQVLDebugWindowSizeKey).arrayOrEmpty();
    const auto width = static_cast<int>(size.valueAtIndex(0).qvl_castToIntegerValue());
    const auto height = static_cast<int>(size.valueAtIndex(1).qvl_castToIntegerValue());
    if (width > 0 && height > 0 && screen()) {
        resize(QSize(width, height).boundedTo(screen()->availableSize()));
    }
}

void QVLDebugWindow::saveSize() const {
    QVLUserDefaults::standardUserDefaults()->setObjectForKey(QVLJSONArray({width(), height()}), kQVLDebugWindowSizeKey);
}

void QVLDebugWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (event->spontaneous()) {
        return;
    }
    m_sizeWhenOpened = size();
    if (std::exchange(m_wasClosed, false)) {
        for (const Section& section : m_sections) {
            section->windowWillReopen();
        }
    }
}

void QVLDebugWindow::hideEvent(QHideEvent* event) {
    QMainWindow::hideEvent(event);
    // Spontaneous ones tell of a minimised window.
    if (event->spontaneous() || std::exchange(m_wasClosed, true)) {
        return;
    }
    if (size() != m_sizeWhenOpened) {
        saveSize();
    }
    for (const Section& section : m_sections) {
        section->windowDidClose();
    }
}

void QVLDebugWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    // Icons are kept by the buttons as they were drawn.
    if (event->type() == QEvent::PaletteChange) {
        for (std::size_t index = 0; index < m_toolbarItems.size(); ++index) {
            m_toolbarItems[index]->setIcon(m_sections[index]->toolbarIcon());
            m_sections[index]->appearanceDidChange();
        }
    }
}
