#include "QVLDebugJournalViewController.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugJournalContent.h"
#include "QVLDebugJournalDataSource.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLDebugWindow.h"
#include "QVLQuorvel.h"

#include <QBoxLayout>
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
    : QVLDebugTableViewController(std::move(quorvel)) {
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
    makeView({"outpus", "Outputs", kQVLJournalViewWidth, kRowHeight});
    m_resetButton = qvl_lowButton(qvl_localizedString("Reset Journals"), view());
    bottomRow().addStretch(1);
    bottomRow().addWidget(m_resetButton);
    QObject::connect(m_resetButton, &QPushButton::clicked, view(), [this] { resetJournals(m_resetButton); });
    setDataSource(std::make_unique<QVLDebugJournalDataSource>(tableView(), quorvel()));
    updateFilterPredicate();
}

void QVLDebugJournalViewController::search(QLineEdit* /*sender*/) {
    updateFilterPredicate();
}

void QVLDebugJournalViewController::resetJournals(QPushButton* /*sender*/) {
    quorvel()->journals()->reset();
}

void QVLDebugJournalViewController::updateFilterPredicate() {
    dataSource().setFilterPredicate(qvl_journalFilterPredicate(qvl_text(searchField()->text())));
}
