#pragma once

#include "QVLDebugScriptDateFormatter.h"
#include "QVLScript.h"
#include "QVLToken.h"

#include <QWidget>

#include <memory>
#include <optional>
#include <string>

class QLabel;
class QPushButton;
class QSpacerItem;
class QVLDebugBadge;
class QVLScriptTableCellView;

/// Told when the button of a script's row is pressed.
class QVLScriptTableCellViewDelegate {
public:
    virtual ~QVLScriptTableCellViewDelegate() = default;
    /// The cell may be gone when this returns.
    virtual void scriptTableCellDidClickUseScript(QVLScriptTableCellView& cell) = 0;
};

/// A row of the scripts table: a script, how far it has got, and a button to use it. Main thread.
class QVLScriptTableCellView final : public QWidget {
    Q_OBJECT

public:
    /// The row's title, no value for none.
    QVLScriptTableCellView(std::shared_ptr<QVLScript> script, std::optional<std::string> label, bool isCurrentScript,
                           QWidget* parent = nullptr);

    [[nodiscard]] const std::shared_ptr<QVLScript>& script() const { return m_script; }
    [[nodiscard]] const std::optional<std::string>& label() const { return m_label; }
    [[nodiscard]] bool isCurrentScript() const { return m_isCurrentScript; }
    void setIsCurrentScript(bool isCurrentScript);
    /// Outlives the cell.
    void setDelegate(QVLScriptTableCellViewDelegate* delegate) { m_delegate = delegate; }

    /// Of the script's date.
    [[nodiscard]] static const QVLDebugScriptDateFormatter& dateFormatter();
    void reloadData();
    void useScript(QPushButton* sender);

    [[nodiscard]] QLabel* versionLabel() const { return m_versionLabel; }
    [[nodiscard]] QVLDebugBadge* labelView() const { return m_labelView; }
    [[nodiscard]] QLabel* dateLabel() const { return m_dateLabel; }
    [[nodiscard]] QPushButton* useButton() const { return m_useButton; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setupViews();
    void setupLayout();
    /// Beside the version; higher than its line, and so in no layout but for the room that it takes there.
    void placeLabelView();

    const std::shared_ptr<QVLScript> m_script;
    const std::optional<std::string> m_label;
    bool m_isCurrentScript;
    QVLScriptTableCellViewDelegate* m_delegate = nullptr;
    QLabel* m_versionLabel = nullptr;
    QVLDebugBadge* m_labelView = nullptr;
    QSpacerItem* m_labelRoom = nullptr;
    QLabel* m_dateLabel = nullptr;
    QPushButton* m_useButton = nullptr;
    QVLToken m_stateObservation;
};
