#include "QVLDebugTableView.h"

#include "QVLDebugAppearance.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>

namespace {

/// What a scroll bar takes away from the table, if the style's scroll bars do not lie over it.
int legacyScrollerWidth(const QWidget& table) {
    const bool isOverlay = table.style()->styleHint(QStyle::SH_ScrollBar_Transient, nullptr, &table) != 0;
    return isOverlay ? 0 : table.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &table);
}

QVLDebugTableView::Column columnFrom(const QVLJSONDictionary& info) {
    return {info.valueForKey(kQVLTableColumnIdentifier).qvl_castToStringValue().value_or(""),
            info.valueForKey(kQVLTableColumnTitle).qvl_castToStringValue().value_or(""),
            static_cast<int>(info.valueForKey(kQVLTableColumnWidth).qvl_castToIntegerValue())};
}

} // namespace

QVLDebugTableView* QVLDebugTableView::tableViewWithFrame(const QRect& frame,
                                                         const std::vector<QVLJSONDictionary>& columnInfo) {
    std::vector<Column> columns;
    columns.reserve(columnInfo.size());
    for (const QVLJSONDictionary& info : columnInfo) {
        columns.push_back(columnFrom(info));
    }
    auto* const table = new QVLDebugTableView(std::move(columns));
    table->setGeometry(frame);
    return table;
}

QVLDebugTableView::QVLDebugTableView(std::vector<Column> columns) : m_columns(std::move(columns)) {
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setEditTriggers(NoEditTriggers);
    // Tab walks through the fields of the rows, not through cells.
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    horizontalHeader()->setStretchLastSection(true);
    connect(qApp, &QApplication::focusChanged, this, &QVLDebugTableView::focusDidChange);
}

void QVLDebugTableView::setModel(QAbstractItemModel* model) {
    QTableView::setModel(model);
    const int scroller = legacyScrollerWidth(*this);
    for (int column = 0; column < static_cast<int>(m_columns.size()); ++column) {
        if (const int width = m_columns[static_cast<std::size_t>(column)].width) {
            setColumnWidth(column, width - scroller);
        }
    }
    // A narrow window scrolls; the column that is stretched keeps its width at least.
    if (!m_columns.empty()) {
        horizontalHeader()->setMinimumSectionSize(columnWidth(static_cast<int>(m_columns.size()) - 1));
    }
    connect(model, &QAbstractItemModel::modelReset, this, [this] {
        m_mustReload = true;
        // The scroll bar has to know the number of rows before the rows are laid out.
        updateGeometries();
    });
}

void QVLDebugTableView::setRowHeight(int height) {
    verticalHeader()->setDefaultSectionSize(height);
    verticalScrollBar()->setSingleStep(height / 2);
}

int QVLDebugTableView::rowHeight() const {
    return verticalHeader()->defaultSectionSize();
}

void QVLDebugTableView::setPlainStyle() {
    setShowGrid(false);
    setSelectionMode(NoSelection);
    setFrameShape(NoFrame);
    horizontalHeader()->hide();
}

QWidget* QVLDebugTableView::viewAtRow(int row) const {
    const auto found = m_views.find(row);
    return found == m_views.end() ? nullptr : found->second.view.data();
}

QSize QVLDebugTableView::sizeHint() const {
    constexpr int kShownHeight = 448;
    int width = 0;
    for (const Column& column : m_columns) {
        width += column.width;
    }
    return {width, kShownHeight};
}

void QVLDebugTableView::paintEvent(QPaintEvent* /*event*/) {
    // The rows' views show everything but the lines between them.
    QPainter painter(viewport());
    constexpr double kLineGray = 0.85;
    painter.setPen(qvl_gray(kLineGray, palette()));
    const auto [first, last] = visibleRows();
    for (int row = first; row <= last; ++row) {
        const int bottom = rowViewportPosition(row) + rowHeight() - 1;
        painter.drawLine(0, bottom, viewport()->width(), bottom);
    }
}

void QVLDebugTableView::scrollContentsBy(int dx, int dy) {
    QTableView::scrollContentsBy(dx, dy);
    layOutRows();
}

void QVLDebugTableView::updateGeometries() {
    QTableView::updateGeometries();
    layOutRows();
}

void QVLDebugTableView::showEvent(QShowEvent* event) {
    QTableView::showEvent(event);
    layOutRows();
}

void QVLDebugTableView::contextMenuEvent(QContextMenuEvent* event) {
    m_clickedRow = rowAt(event->pos().y());
    if (m_menu) {
        m_menu->popup(event->globalPos());
    }
}

void QVLDebugTableView::keyPressEvent(QKeyEvent* event) {
    QAbstractScrollArea::keyPressEvent(event); // NOLINT(bugprone-parent-virtual-call)
}

void QVLDebugTableView::focusDidChange(QWidget* old, QWidget* now) {
    // A window that comes back brings its focus along, and what is clicked must not move away under the mouse.
    const bool hasMoved = old && now && viewport()->isAncestorOf(now) && QApplication::mouseButtons() == Qt::NoButton;
    if (const std::optional<int> row = hasMoved ? focusedRow() : std::nullopt) {
        const int top = *row * rowHeight();
        const int position = std::max(verticalScrollBar()->value(), top + rowHeight() - viewport()->height());
        verticalScrollBar()->setValue(std::min(position, top));
    }
}

std::pair<int, int> QVLDebugTableView::visibleRows() const {
    // By arithmetic: while the number of rows changes, the header does not know yet where a row is.
    const int count = model()->rowCount();
    const int offset = verticalHeader()->offset();
    const int last = (offset + viewport()->height() - 1) / rowHeight();
    return {std::max(offset / rowHeight(), 0), std::min(last, count - 1)};
}

QVLDebugTableView::RowView QVLDebugTableView::taken(RowViews& views, const std::string& identifier) {
    for (auto entry = views.begin(); entry != views.end(); ++entry) {
        if (entry->second.identifier == identifier) {
            RowView view = std::move(entry->second);
            views.erase(entry);
            return view;
        }
    }
    return {};
}

std::optional<int> QVLDebugTableView::focusedRow() const {
    for (const auto& [row, rowView] : m_views) {
        if (rowView.view && rowView.view->isAncestorOf(window()->focusWidget())) {
            return row;
        }
    }
    return std::nullopt;
}

std::optional<int> QVLDebugTableView::rowOfIdentifier(const std::string& identifier) const {
    for (int row = 0; row < model()->rowCount(); ++row) {
        if (m_delegate->identifierForRow(row) == identifier) {
            return row;
        }
    }
    return std::nullopt;
}

std::set<int> QVLDebugTableView::rowsToLayOut(bool mustReload) const {
    const auto [first, last] = visibleRows();
    std::set<int> rows;
    for (int row = std::max(first - 1, 0); row <= std::min(last + 1, model()->rowCount() - 1); ++row) {
        rows.insert(row);
    }
    std::optional<int> focused = focusedRow();
    if (focused && mustReload) {
        focused = rowOfIdentifier(m_views.at(*focused).identifier);
    }
    if (focused) {
        rows.insert(*focused);
    }
    return rows;
}

void QVLDebugTableView::layOutRows() {
    if (!m_delegate || !isVisible()) {
        return;
    }
    const bool mustReload = std::exchange(m_mustReload, false);
    const std::set<int> rows = rowsToLayOut(mustReload);
    RowViews old = std::exchange(m_views, {});
    const std::size_t madeBefore = m_madeViewCount;
    for (const int row : rows) {
        const std::string identifier = m_delegate->identifierForRow(row);
        RowView rowView = taken(old, identifier);
        if (!rowView.view) {
            rowView = {identifier, m_delegate->makeViewForRow(row)};
            rowView.view->setParent(viewport());
            ++m_madeViewCount;
        } else if (mustReload) {
            m_delegate->updateViewForRow(*rowView.view, row);
        }
        rowView.view->setGeometry(columnViewportPosition(0), rowViewportPosition(row), columnWidth(0), rowHeight() - 1);
        rowView.view->show();
        m_views[row] = std::move(rowView);
    }
    remove(old);
    if (m_madeViewCount > madeBefore) {
        updateTabOrder();
    }
}

void QVLDebugTableView::removeRowViews() {
    remove(std::exchange(m_views, {}));
}

void QVLDebugTableView::remove(const RowViews& views) {
    for (const auto& [row, gone] : views) {
        if (gone.view) {
            // Hiding would hand the focus on to whatever row comes next.
            if (gone.view->isAncestorOf(window()->focusWidget())) {
                setFocus(Qt::OtherFocusReason);
            }
            // One of them may be what is being told of an edit right now.
            gone.view->hide();
            qvl_deleteLater(*gone.view);
        }
    }
}

void QVLDebugTableView::updateTabOrder() {
    QWidget* previous = this;
    for (const auto& [row, rowView] : m_views) {
        for (QWidget* const child : rowView.view->findChildren<QWidget*>()) {
            if (child->focusPolicy() & Qt::TabFocus) {
                setTabOrder(previous, child);
                previous = child;
            }
        }
    }
}
