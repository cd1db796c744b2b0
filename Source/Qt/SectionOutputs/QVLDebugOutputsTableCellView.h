#pragma once

#include "QVLDebugTableCellView.h"

/// A row of the outputs table.
class QVLDebugOutputsTableCellView final : public QVLDebugTableCellView {
    Q_OBJECT

public:
    using QVLDebugTableCellView::QVLDebugTableCellView;

    /// The engine's overrides of outputs.
    [[nodiscard]] QVLJSONDictionary overrides() const override;
    void setOverrides(const QVLJSONDictionary& overrides) override;
};
