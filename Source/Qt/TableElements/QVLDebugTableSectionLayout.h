#pragma once

#include <QWidget>

#include <memory>
#include <string>

class QHBoxLayout;
class QLineEdit;
class QPushButton;
class QVLDebugTableView;

/// The parts that the inputs, outputs and journal sections have in common: a row with "Log Data" and a search field, the
/// table, and a row below it for what each has of its own.
struct QVLDebugTableSectionView {
    /// Owns all the others.
    std::unique_ptr<QWidget> view;
    QPushButton* logButton = nullptr;
    QLineEdit* searchField = nullptr;
    QVLDebugTableView* tableView = nullptr;
    QHBoxLayout* bottomRow = nullptr;
};

/// Takes over the table.
[[nodiscard]] QVLDebugTableSectionView qvl_makeTableSectionView(QVLDebugTableView* tableView);
