#include "QVLDebugTableSectionLayout.h"

#include "QVLDebugLocalization.h"
#include "QVLDebugTableView.h"
#include "QVLDebugText.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kSide = 10;
constexpr int kDistance = 8;
constexpr int kSearchWidth = 250;
constexpr int kLeastGap = 20;

QHBoxLayout* makeRow() {
    auto* const row = new QHBoxLayout;
    row->setContentsMargins(kSide, 0, kSide, 0);
    row->setSpacing(0);
    return row;
}

QHBoxLayout* makeTopRow(QVLDebugTableSectionView& section) {
    QWidget* const parent = section.view.get();
    section.logButton = new QPushButton(qvl_text(qvl_localizedString("Log Data")), parent);
    section.searchField = new QLineEdit(parent);
    section.searchField->setFixedWidth(kSearchWidth);
    section.searchField->setPlaceholderText(qvl_text(qvl_localizedString("Search")));
    section.searchField->setAccessibleName(section.searchField->placeholderText());
    section.searchField->setClearButtonEnabled(true);
    QHBoxLayout* const row = makeRow();
    row->addWidget(section.logButton);
    row->addSpacing(kLeastGap);
    row->addStretch(1);
    row->addWidget(section.searchField);
    return row;
}

} // namespace

QVLDebugTableSectionView qvl_makeTableSectionView(QVLDebugTableView* tableView) {
    QVLDebugTableSectionView section;
    section.view = std::make_unique<QWidget>();
    section.tableView = tableView;
    section.bottomRow = makeRow();
    auto* const layout = new QVBoxLayout(section.view.get());
    layout->setContentsMargins(0, kDistance, 0, kDistance);
    layout->setSpacing(kDistance);
    layout->addLayout(makeTopRow(section));
    layout->addWidget(tableView, 1);
    layout->addLayout(section.bottomRow);
    return section;
}
