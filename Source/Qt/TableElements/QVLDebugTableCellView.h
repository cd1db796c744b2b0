#pragma once

#include "QVLDebugTableCellViewProtocol.h"
#include "QVLDebugValueView.h"

#include <QWidget>

class QHBoxLayout;
class QLabel;

/// Shows a row's key and value, and writes overrides back. Which dictionary of overrides that is, a subclass says.
class QVLDebugTableCellView : public QWidget,
                              public QVLDebugTableCellViewProtocol,
                              protected QVLDebugValueViewDelegate {
    Q_OBJECT

public:
    explicit QVLDebugTableCellView(std::shared_ptr<QVLQuorvel> quorvel, QWidget* parent = nullptr);
    ~QVLDebugTableCellView() override;

    [[nodiscard]] const std::shared_ptr<QVLQuorvel>& quorvel() const { return m_quorvel; }
    [[nodiscard]] const std::shared_ptr<QVLDebugDataSourceObject>& objectValue() const override {
        return m_objectValue;
    }
    void setObjectValue(const std::shared_ptr<QVLDebugDataSourceObject>& objectValue) override;
    virtual void reloadData();

    /// Override values by key.
    [[nodiscard]] virtual QVLJSONDictionary overrides() const { return m_overrides; }
    virtual void setOverrides(const QVLJSONDictionary& overrides) { m_overrides = overrides; }

    [[nodiscard]] QLabel* keyLabel() const { return m_keyLabel; }
    [[nodiscard]] QVLDebugValueView* valueView() const { return m_valueView; }

    void debugValueViewOverrideValueDidChange(QVLDebugValueView& view) override;

protected:
    static constexpr int kKeyWidth = 300;
    static constexpr int kHPad = 10;
    static constexpr int kVPad = 5;

    void setupSubviews();
    void setupLayout();
    [[nodiscard]] QHBoxLayout* rowLayout() const { return m_rowLayout; }

private:
    const std::shared_ptr<QVLQuorvel> m_quorvel;
    std::shared_ptr<QVLDebugDataSourceObject> m_objectValue;
    QVLJSONDictionary m_overrides;
    QLabel* m_keyLabel = nullptr;
    QVLDebugValueView* m_valueView = nullptr;
    QHBoxLayout* m_rowLayout = nullptr;
};
