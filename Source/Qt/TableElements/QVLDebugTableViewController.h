#pragma once

#include "QVLDebugDataSource.h"
#include "QVLDebugSection.h"

#include <memory>

class QBoxLayout;
class QLineEdit;
class QPushButton;

/// What the inputs, outputs and journal sections have in common: a row with "Log Data" and a search field, the table,
/// and a row below it for what each has of its own. Main thread.
class QVLDebugTableViewController : public QVLDebugSection {
public:
    QVLDebugTableViewController(const QVLDebugTableViewController&) = delete;
    QVLDebugTableViewController& operator=(const QVLDebugTableViewController&) = delete;
    ~QVLDebugTableViewController() override;

    [[nodiscard]] const std::shared_ptr<QVLQuorvel>& quorvel() const { return m_quorvel; }
    [[nodiscard]] QVLDebugDataSource& dataSource() const { return *m_dataSource; }
    [[nodiscard]] QWidget* view() const override { return m_view.get(); }
    [[nodiscard]] QVLDebugTableView* tableView() const { return m_tableView; }
    [[nodiscard]] QPushButton* logButton() const { return m_logButton; }
    [[nodiscard]] QLineEdit* searchField() const { return m_searchField; }

    /// Shows the rows whose key contains the field's text.
    virtual void search(QLineEdit* sender);
    /// Lets the engine log its state.
    void logData(QPushButton* sender);

    void windowDidClose() override;
    void windowWillReopen() override;

protected:
    explicit QVLDebugTableViewController(std::shared_ptr<QVLQuorvel> quorvel);

    /// A table of one column.
    struct Table {
        const char* identifier;
        const char* title;
        double width;
        int rowHeight;
    };
    /// Makes the view.
    void makeView(const Table& table);
    void setDataSource(std::unique_ptr<QVLDebugDataSource> dataSource) { m_dataSource = std::move(dataSource); }
    /// The row below the table.
    [[nodiscard]] QBoxLayout& bottomRow() const { return *m_bottomRow; }

private:
    void addTopRow(QBoxLayout& layout);

    const std::shared_ptr<QVLQuorvel> m_quorvel;
    // Outlives the table.
    std::unique_ptr<QVLDebugDataSource> m_dataSource;
    std::unique_ptr<QWidget> m_view;
    QVLDebugTableView* m_tableView = nullptr;
    QPushButton* m_logButton = nullptr;
    QLineEdit* m_searchField = nullptr;
    QBoxLayout* m_bottomRow = nullptr;
};
