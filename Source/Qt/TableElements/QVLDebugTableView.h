#pragma once

#include "QVLJSONDictionary.h"

#include <QMenu>
#include <QPointer>
#include <QTableView>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// Keys of a column description.
/// Text.
inline constexpr const char* kQVLTableColumnIdentifier = "identifier";
/// Text.
inline constexpr const char* kQVLTableColumnTitle = "title";
/// Number, may be left out.
inline constexpr const char* kQVLTableColumnWidth = "width";

/// Gives a table the views of its rows.
class QVLDebugTableViewDelegate {
public:
    virtual ~QVLDebugTableViewDelegate() = default;

    /// A new view of the row.
    [[nodiscard]] virtual QWidget* makeViewForRow(int row) = 0;
    /// Tells rows apart across reloads.
    [[nodiscard]] virtual std::string identifierForRow(int row) const = 0;
    /// Hands the view the row that now has its identifier.
    virtual void updateViewForRow(QWidget& view, int row) = 0;
};

/// A table of views, which are made for the visible rows only, and one beyond them at either end, so that Tab finds its
/// way there. Main thread.
///
/// A reload keeps the view of each row that is still there, and what is being typed in it; so does scrolling.
class QVLDebugTableView final : public QTableView {
    Q_OBJECT

public:
    struct Column {
        std::string identifier;
        std::string title;
        /// 0 for none.
        int width = 0;
    };

    /// A table with a column for each description.
    [[nodiscard]] static QVLDebugTableView* tableViewWithFrame(const QRect& frame,
                                                               const std::vector<QVLJSONDictionary>& columnInfo);

    [[nodiscard]] const std::vector<Column>& columns() const { return m_columns; }
    /// Comes with the model, and lives as long.
    void setViewDelegate(QVLDebugTableViewDelegate* delegate) { m_delegate = delegate; }
    void setModel(QAbstractItemModel* model) override;

    void setRowHeight(int height);
    [[nodiscard]] int rowHeight() const;
    /// The look that all sections share: horizontal lines, no header, nothing selected.
    void setPlainStyle();

    /// Shown for a click with the right button; the row is `clickedRow` until the next one. The table does not own it.
    void setMenu(QMenu* menu) { m_menu = menu; }
    [[nodiscard]] QMenu* menu() const { return m_menu; }
    /// -1 when no row was clicked.
    [[nodiscard]] int clickedRow() const { return m_clickedRow; }

    /// The view of the row, or null when it is not visible.
    [[nodiscard]] QWidget* viewAtRow(int row) const;
    [[nodiscard]] int viewCount() const { return static_cast<int>(m_views.size()); }
    /// How many views were made so far.
    [[nodiscard]] std::size_t madeViewCount() const { return m_madeViewCount; }
    /// They are made again when the table is next shown.
    void removeRowViews();

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    /// Scrolls; there is no current row to move.
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    struct RowView {
        std::string identifier;
        QPointer<QWidget> view;
    };
    using RowViews = std::map<int, RowView>;

    explicit QVLDebugTableView(std::vector<Column> columns);
    void layOutRows();
    [[nodiscard]] std::pair<int, int> visibleRows() const;
    /// Those that are visible, their neighbours, and the one with the focus, wherever it is now.
    [[nodiscard]] std::set<int> rowsToLayOut(bool mustReload) const;
    /// Of the rows that have views.
    [[nodiscard]] std::optional<int> focusedRow() const;
    [[nodiscard]] std::optional<int> rowOfIdentifier(const std::string& identifier) const;
    [[nodiscard]] static RowView taken(RowViews& views, const std::string& identifier);
    void updateTabOrder();
    void remove(const RowViews& views);
    /// Scrolls to the row that the keyboard has moved to.
    void focusDidChange(QWidget* old, QWidget* now);

    const std::vector<Column> m_columns;
    QVLDebugTableViewDelegate* m_delegate = nullptr;
    QPointer<QMenu> m_menu;
    int m_clickedRow = -1;
    RowViews m_views;
    std::size_t m_madeViewCount = 0;
    bool m_mustReload = false;
};
