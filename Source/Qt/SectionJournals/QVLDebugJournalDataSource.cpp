#include "QVLDebugJournalDataSource.h"

#include "QVLDebugJournalContent.h"
#include "QVLDebugJournalTableCellView.h"
#include "QVLQuorvel.h"

QVLDebugJournalDataSource::QVLDebugJournalDataSource(QVLDebugTableView* tableView,
                                                     const std::shared_ptr<QVLQuorvel>& quorvel) {
    initWithTableView(tableView, quorvel);
}

std::set<std::string> QVLDebugJournalDataSource::allJournalsKeys() const {
    return qvl_allJournalsKeys(*quorvel()->journals());
}

QVLDebugTableCellViewClass QVLDebugJournalDataSource::tableCellViewClass() const {
    return [](const std::shared_ptr<QVLQuorvel>& quorvel) { return new QVLDebugJournalTableCellView(quorvel); };
}

void QVLDebugJournalDataSource::startObservingChanges() {
    observe(kQVLJournalsDidChangeNotification, quorvel(),
            [this](const QVLNotification& notification) { journalsDidChange(notification); });
    observe(kQVLOutputsDidChangeNotification, quorvel(),
            [this](const QVLNotification& notification) { outputsDidChange(notification); });
}

void QVLDebugJournalDataSource::journalsDidChange(const QVLNotification& /*notification*/) {
    reloadData();
}

void QVLDebugJournalDataSource::outputsDidChange(const QVLNotification& /*notification*/) {
    reloadData();
}

void QVLDebugJournalDataSource::reloadData() {
    updateCachedValues(qvl_journalRows(*quorvel()->journals()));
}
