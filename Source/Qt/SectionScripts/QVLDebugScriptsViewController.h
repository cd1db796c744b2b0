#pragma once

#include "QVLDebugDateFormatter.h"
#include "QVLDebugScriptDataSource.h"
#include "QVLDebugSection.h"

class QToolButton;
class QVLQuorvel;

/// The section of the scripts: which one runs, which others there are, and the debug page. Main thread.
class QVLDebugScriptsViewController final : public QVLDebugSection,
                                            public std::enable_shared_from_this<QVLDebugScriptsViewController> {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugScriptsViewController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel);
    ~QVLDebugScriptsViewController() override;

    [[nodiscard]] std::string title() const override;
    [[nodiscard]] QIcon toolbarIcon() const override;
    [[nodiscard]] QWidget* view() const override { return m_view.get(); }

    void windowDidClose() override;
    void windowWillReopen() override;
    void appearanceDidChange() override { updateStatusLabels(); }

    /// Of the time of the last run.
    [[nodiscard]] static const QVLDebugDateFormatter& dateFormatter();
    [[nodiscard]] QLabel* createLabelWithFont(const QFont& font);
    /// Something that the labels show changed: they follow on a later turn of the main loop. Any thread.
    void observeValueForKeyPath(const char* keyPath);
    void updateStatusLabels();
    /// Lets the script manager choose again.
    void clearOverride(QToolButton* sender);
    /// Writes the debug page and opens it; sounds the alert when there is none.
    void debugScript(QPushButton* sender);

    [[nodiscard]] QVLDebugScriptDataSource& dataSource() const { return *m_dataSource; }
    [[nodiscard]] QVLDebugTableView* tableView() const { return m_tableView; }
    [[nodiscard]] QLabel* versionLabel() const { return m_versionLabel; }
    [[nodiscard]] QLabel* lastRunDateLabel() const { return m_lastRunDateLabel; }
    [[nodiscard]] QVLDebugBadge* scriptType() const { return m_scriptType; }
    [[nodiscard]] QToolButton* clearOverrideButton() const { return m_clearOverrideButton; }
    [[nodiscard]] QPushButton* debugButton() const { return m_debugButton; }

private:
    explicit QVLDebugScriptsViewController(std::shared_ptr<QVLQuorvel> quorvel);
    void loadView();
    void setupLabels();
    void setupButtons();
    void setupLayout();
    void startObserving();

    const std::shared_ptr<QVLQuorvel> m_quorvel;
    // Outlives the table.
    std::unique_ptr<QVLDebugScriptDataSource> m_dataSource;
    std::unique_ptr<QWidget> m_view;
    QVLDebugTableView* m_tableView = nullptr;
    QLabel* m_currentScriptLabel = nullptr;
    QLabel* m_versionTitle = nullptr;
    QLabel* m_versionLabel = nullptr;
    QLabel* m_lastRunDateTitle = nullptr;
    QLabel* m_lastRunDateLabel = nullptr;
    QLabel* m_availableScriptsLabel = nullptr;
    QVLDebugBadge* m_scriptType = nullptr;
    QToolButton* m_clearOverrideButton = nullptr;
    QPushButton* m_debugButton = nullptr;
    std::vector<QVLToken> m_observations;
};
