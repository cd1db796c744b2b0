#pragma once

#include "QVLDebugTableViewController.h"

class QCheckBox;

/// The section of the outputs: their values, overrides, and a switch that disables them all. Main thread.
class QVLDebugOutputsViewController final : public QVLDebugTableViewController {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugOutputsViewController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel);
    ~QVLDebugOutputsViewController() override;

    [[nodiscard]] std::string title() const override;
    [[nodiscard]] QIcon toolbarIcon() const override;
    /// Others may have disabled the outputs meanwhile.
    void sectionWillDisplay() override;
    void windowWillReopen() override;

    void disableOutputs(QCheckBox* sender);

    [[nodiscard]] QCheckBox* disableCheck() const { return m_disableCheck; }

private:
    explicit QVLDebugOutputsViewController(std::shared_ptr<QVLQuorvel> quorvel);
    void loadView();

    QCheckBox* m_disableCheck = nullptr;
};
