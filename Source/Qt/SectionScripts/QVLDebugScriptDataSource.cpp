#include "QVLDebugScriptDataSource.h"

#include "QVLDebugScriptsKeys.h"
#include "QVLDebugText.h"
#include "QVLScriptManager.h"

namespace {

constexpr int kRowHeight = 40;

} // namespace

QVLDebugScriptDataSource::QVLDebugScriptDataSource(QVLDebugTableView* tableView,
                                                   std::shared_ptr<QVLScriptManager> scriptManager)
    : m_scriptManager(std::move(scriptManager)) {
    setTableView(tableView);
    tableView->setRowHeight(kRowHeight);
    if (m_scriptManager) {
        m_scriptManager->fetchScriptsNow();
    }
    startObservingChanges();
    reloadData(nullptr);
}

void QVLDebugScriptDataSource::startObservingChanges() {
    if (!m_scriptManager) {
        return;
    }
    for (const char* const name :
         {kQVLScriptManagerDidFetchScriptsNotification, kQVLScriptManagerCurrentScriptNeedsReloadNotification}) {
        observe(name, m_scriptManager, [this](const QVLNotification& notification) { reloadData(&notification); });
    }
}

void QVLDebugScriptDataSource::reloadData(const QVLNotification* /*notification*/) {
    beginResetModel();
    m_cachedCellInfo = m_scriptManager ? qvl_scriptRows(*m_scriptManager) : std::vector<QVLDebugScriptCellInfo>();
    ++m_loadCount;
    endResetModel();
}

bool QVLDebugScriptDataSource::isGroupRow(int row) const {
    return infoAtRow(row).isGroup;
}

QWidget* QVLDebugScriptDataSource::viewForTableColumn(int /*column*/, int row) {
    const QVLDebugScriptCellInfo& info = infoAtRow(row);
    auto* const cell =
        new QVLScriptTableCellView(info.script, info.title, qvl_isCurrentScript(*m_scriptManager, *info.script));
    cell->setDelegate(this);
    return cell;
}

void QVLDebugScriptDataSource::scriptTableCellDidClickUseScript(QVLScriptTableCellView& cell) {
    // Whoever learns of the choice may drop the console.
    const QPointer<QVLDebugScriptDataSource> self(this);
    const std::shared_ptr<QVLScriptManager> manager = m_scriptManager;
    const std::shared_ptr<QVLScript> script = cell.script(); // NOLINT(performance-unnecessary-copy-initialization)
    // Its button goes away or is disabled, and must not hand the focus to another script's.
    tableView()->setFocus(Qt::OtherFocusReason);
    if (qvl_useScript(*manager, script) && self) {
        reloadData(nullptr);
    }
}

QVariant QVLDebugScriptDataSource::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= numberOfRowsInTableView()) {
        return {};
    }
    const QVLDebugScriptCellInfo& info = infoAtRow(index.row());
    switch (role) {
    case LabelRole:
        return info.title ? QVariant(qvl_text(*info.title)) : QVariant();
    case Qt::DisplayRole:
    case ScriptRole:
        return qvl_text(info.script->version().value_or(""));
    case IsGroupRole:
        return info.isGroup;
    default:
        return {};
    }
}

QHash<int, QByteArray> QVLDebugScriptDataSource::roleNames() const {
    QHash<int, QByteArray> names = QAbstractTableModel::roleNames();
    names[LabelRole] = kQVLDebugCellLabelKey;
    names[ScriptRole] = kQVLDebugCellScriptKey;
    names[IsGroupRole] = kQVLDebugCellIsGroupKey;
    return names;
}

std::string QVLDebugScriptDataSource::identifierForRow(int row) const {
    return std::to_string(m_loadCount) + "." + std::to_string(row);
}
