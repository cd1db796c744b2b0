#include "QVLDebugOverridesDataSource.h"

#include "QVLDebugDesktop.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"

#include <QMenu>

QVLDebugOverridesDataSource::~QVLDebugOverridesDataSource() = default;

QMenu* QVLDebugOverridesDataSource::contextMenu() {
    if (!m_contextMenu) {
        m_contextMenu = new QMenu(tableView());
        QAction* const item = m_contextMenu->addAction(qvl_text(qvl_localizedString("Copy Defaults Key")));
        connect(item, &QAction::triggered, this, [this, item] { copyDefaultsKeys(item); });
    }
    return m_contextMenu;
}

void QVLDebugOverridesDataSource::copyDefaultsKeys(QAction* /*sender*/) {
    const QVLDebugDesktop& desktop = QVLDebugDesktop::current();
    if (const std::optional<std::string> key = defaultsKeyForRow(tableView()->clickedRow())) {
        desktop.copyText(*key);
    } else {
        desktop.beep();
    }
}
