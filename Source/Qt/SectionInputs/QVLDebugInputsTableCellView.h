#pragma once

#include "QVLDebugTableCellView.h"

/// A row of the inputs table, with the time that the host took to produce the input.
class QVLDebugInputsTableCellView final : public QVLDebugTableCellView {
    Q_OBJECT

public:
    explicit QVLDebugInputsTableCellView(const std::shared_ptr<QVLQuorvel>& quorvel, QWidget* parent = nullptr);

    void reloadData() override;
    /// The engine's overrides of inputs.
    [[nodiscard]] QVLJSONDictionary overrides() const override;
    void setOverrides(const QVLJSONDictionary& overrides) override;

    [[nodiscard]] QLabel* generationTimeLabel() const { return m_generationTimeLabel; }

private:
    QLabel* m_generationTimeLabel = nullptr;
};
