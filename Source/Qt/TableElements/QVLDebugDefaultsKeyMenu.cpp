#include "QVLDebugDefaultsKeyMenu.h"

#include "QVLDebugDesktop.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"

#include <QMenu>

QMenu* qvl_makeDefaultsKeyMenu(QWidget* parent, std::function<void()> copy) {
    auto* const menu = new QMenu(parent);
    const QAction* const item = menu->addAction(qvl_text(qvl_localizedString("Copy Defaults Key")));
    QObject::connect(item, &QAction::triggered, menu, std::move(copy));
    return menu;
}

void qvl_copyDefaultsKey(const std::optional<std::string>& key) {
    const QVLDebugDesktop& desktop = QVLDebugDesktop::current();
    if (key) {
        desktop.copyText(*key);
    } else {
        desktop.beep();
    }
}
