#include "QVLDebugJournalViewController.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugJournalContent.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLDebugWindow.h"
#include "QVLQuorvel.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

namespace {

/// Room for the three fields of an event.
constexpr int kRowHeight = 84;

} // namespace

std::shared_ptr<QVLDebugJournalViewController>
QVLDebugJournalViewController::initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel) {
    return std::shared_ptr<QVLDebugJournalViewController>(new QVLDebugJournalViewController(quorvel));
}

QVLDebugJournalViewController::QVLDebugJournalViewController(std::shared_ptr<QVLQuorvel> quorvel)
    : m_quorvel(std::move(quorvel)) {
    loadView();
}

QVLDebugJournalViewController::~QVLDebugJournalViewController() = default;

std::string QVLDebugJournalViewController::title() const {
    return qvl_localizedString("Journal");
}

QIcon QVLDebugJournalViewController::toolbarIcon() const {
    return qvl_templateIcon("quorvelTitlebarJournalTemplate");
}

void QVLDebugJournalViewController::loadView() {
    // The description is that of the outputs' table, misspelling included; keep both alike.
    auto* const table = QVLDebugTableView::tableViewWithFrame({}, {{{kQVLTableColumnIdentifier, "outpus"},
                                                                    {kQVLTableColumnTitle, "Outputs"},
                                                                    {kQVLTableColumnWidth, kQVLJournalViewWidth}}});
    table->setPlainStyle();
    table->setRowHeight(kRowHeight);
    m_section = qvl_makeTableSectionView(table);
    m_resetButton = qvl_lowButton(qvl_localizedString("Reset Journals"), view());
    m_section.bottomRow->addStretch(1);
    m_section.bottomRow->addWidget(m_resetButton);

    QObject::connect(m_section.searchField, &QLineEdit::textChanged, view(), [this] { search(m_section.searchField); });
    QObject::connect(m_section.logButton, &QPushButton::clicked, view(), [this] { logData(m_section.logButton); });
    QObject::connect(m_resetButton, &QPushButton::clicked, view(), [this] { resetJournals(m_resetButton); });
    m_dataSource = std::make_unique<QVLDebugJournalDataSource>(table, m_quorvel);
    updateFilterPredicate();
}

void QVLDebugJournalViewController::search(QLineEdit* /*sender*/) {
    updateFilterPredicate();
}

void QVLDebugJournalViewController::logData(QPushButton* /*sender*/) {
    m_quorvel->logData();
}

void QVLDebugJournalViewController::resetJournals(QPushButton* /*sender*/) {
    m_quorvel->journals()->reset();
}

void QVLDebugJournalViewController::updateFilterPredicate() {
    m_dataSource->setFilterPredicate(qvl_journalFilterPredicate(qvl_text(m_section.searchField->text())));
}
