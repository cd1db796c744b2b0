#include "QVLDebugTableViewController.h"

#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLQuorvel.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kSide = 10;
constexpr int kDistance = 8;
constexpr int kSearchWidth = 250;
constexpr int kLeastGap = 20;

QBoxLayout* addRow(QBoxLayout& layout) {
    auto* const row = new QHBoxLayout;
    row->setContentsMargins(kSide, 0, kSide, 0);
    row->setSpacing(0);
    layout.addLayout(row);
    return row;
}

} // namespace

QVLDebugTableViewController::QVLDebugTableViewController(std::shared_ptr<QVLQuorvel> quorvel)
    : m_quorvel(std::move(quorvel)) {}

QVLDebugTableViewController::~QVLDebugTableViewController() = default;

void QVLDebugTableViewController::makeView(const Table& table) {
    m_view = std::make_unique<QWidget>();
    m_tableView = QVLDebugTableView::tableViewWithFrame({}, {{{kQVLTableColumnIdentifier, table.identifier},
                                                              {kQVLTableColumnTitle, table.title},
                                                              {kQVLTableColumnWidth, table.width}}});
    m_tableView->setPlainStyle();
    m_tableView->setRowHeight(table.rowHeight);

    auto* const layout = new QVBoxLayout(m_view.get());
    layout->setContentsMargins(0, kDistance, 0, kDistance);
    layout->setSpacing(kDistance);
    addTopRow(*layout);
    layout->addWidget(m_tableView, 1);
    m_bottomRow = addRow(*layout);
}

void QVLDebugTableViewController::addTopRow(QBoxLayout& layout) {
    m_logButton = new QPushButton(qvl_text(qvl_localizedString("Log Data")), view());
    m_searchField = new QLineEdit(view());
    m_searchField->setFixedWidth(kSearchWidth);
    m_searchField->setPlaceholderText(qvl_text(qvl_localizedString("Search")));
    m_searchField->setAccessibleName(m_searchField->placeholderText());
    m_searchField->setClearButtonEnabled(true);
    QObject::connect(m_logButton, &QPushButton::clicked, view(), [this] { logData(m_logButton); });
    QObject::connect(m_searchField, &QLineEdit::textChanged, view(), [this] { search(m_searchField); });
    QBoxLayout* const row = addRow(layout);
    row->addWidget(m_logButton);
    row->addSpacing(kLeastGap);
    row->addStretch(1);
    row->addWidget(m_searchField);
}

void QVLDebugTableViewController::search(QLineEdit* sender) {
    const std::string text = qvl_text(sender->text());
    m_dataSource->setFilterPredicate(text.empty() ? QVLDebugFilterPredicate() : qvl_keyContains(text));
}

void QVLDebugTableViewController::logData(QPushButton* /*sender*/) {
    m_quorvel->logData();
}

void QVLDebugTableViewController::windowDidClose() {
    m_dataSource->stopObservingChanges();
    m_tableView->removeRowViews();
}

void QVLDebugTableViewController::windowWillReopen() {
    m_dataSource->startObservingChanges();
    m_dataSource->reloadData();
}
