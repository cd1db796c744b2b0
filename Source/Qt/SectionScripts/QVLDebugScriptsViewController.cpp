#include "QVLDebugScriptsViewController.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugBadge.h"
#include "QVLDebugDesktop.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugScriptsKeys.h"
#include "QVLDebugText.h"
#include "QVLDebugWindow.h"
#include "QVLMainRunLoop.h"
#include "QVLQuorvel.h"
#include "QVLScriptManager.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace {

constexpr int kInitialRowHeight = 32;
constexpr int kTop = 10;
constexpr int kHeadingSide = 10;
constexpr int kSide = 20;
constexpr int kDistance = 8;
constexpr int kLeastGap = 20;
constexpr int kGroupDistance = 20;

constexpr double kOverrideBadgeGray = 0.4;
constexpr double kPlainBadgeGray = 0.6;
constexpr double kOverrideTextGray = 0.0;
constexpr double kPlainTextGray = 0.5;

QFont headingFont() {
    QFont font = qvl_smallFont();
    font.setBold(true);
    return font;
}

QHBoxLayout* addRow(QVBoxLayout& layout, int side) {
    auto* const row = new QHBoxLayout;
    row->setContentsMargins(side, 0, side, 0);
    row->setSpacing(kDistance);
    layout.addLayout(row);
    return row;
}

} // namespace

std::shared_ptr<QVLDebugScriptsViewController>
QVLDebugScriptsViewController::initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel) {
    std::shared_ptr<QVLDebugScriptsViewController> section(new QVLDebugScriptsViewController(quorvel));
    section->startObserving();
    return section;
}

QVLDebugScriptsViewController::QVLDebugScriptsViewController(std::shared_ptr<QVLQuorvel> quorvel)
    : m_quorvel(std::move(quorvel)) {
    loadView();
    updateStatusLabels();
}

QVLDebugScriptsViewController::~QVLDebugScriptsViewController() = default;

std::string QVLDebugScriptsViewController::title() const {
    return qvl_localizedString("Scripts");
}

QIcon QVLDebugScriptsViewController::toolbarIcon() const {
    return qvl_templateIcon("quorvelTitlebarScriptsTemplate");
}

const QVLDebugDateFormatter& QVLDebugScriptsViewController::dateFormatter() {
    static const QVLDebugDateFormatter formatter;
    return formatter;
}

void QVLDebugScriptsViewController::startObserving() {
    const auto changed = [weak = weak_from_this()](const char* keyPath) {
        if (const auto self = weak.lock()) {
            self->observeValueForKeyPath(keyPath);
        }
    };
    // Both are set by one and the same run.
    m_observations.push_back(m_quorvel->observeLastRun([changed] { changed(kQVLDebugScriptsLastRunDate); }));
    if (const auto& manager = m_quorvel->scriptManager()) {
        m_observations.push_back(manager->observeScripts([changed] { changed(kQVLDebugScriptsOverride); }));
    }
}

void QVLDebugScriptsViewController::windowDidClose() {
    m_observations.clear();
    m_dataSource->stopObservingChanges();
    m_tableView->removeRowViews();
}

void QVLDebugScriptsViewController::windowWillReopen() {
    startObserving();
    updateStatusLabels();
    m_dataSource->startObservingChanges();
    m_dataSource->reloadData(nullptr);
}

void QVLDebugScriptsViewController::observeValueForKeyPath(const char* /*keyPath*/) {
    QVLMainRunLoop::mainRunLoop()->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->updateStatusLabels();
        }
    });
}

void QVLDebugScriptsViewController::loadView() {
    m_view = std::make_unique<QWidget>();
    m_tableView = QVLDebugTableView::tableViewWithFrame({}, {{{kQVLTableColumnIdentifier, "scripts"},
                                                              {kQVLTableColumnTitle, "Scripts"},
                                                              {kQVLTableColumnWidth, kQVLScriptsViewWidth}}});
    m_tableView->setPlainStyle();
    m_tableView->setRowHeight(kInitialRowHeight);
    m_dataSource = std::make_unique<QVLDebugScriptDataSource>(m_tableView, m_quorvel->scriptManager());
    setupLabels();
    setupButtons();
    setupLayout();
}

QLabel* QVLDebugScriptsViewController::createLabelWithFont(const QFont& font) {
    QLabel* const label = qvl_selectableLabel(m_view.get());
    label->setFont(font);
    return label;
}

void QVLDebugScriptsViewController::setupLabels() {
    const QFont plain = QApplication::font();
    m_currentScriptLabel = createLabelWithFont(headingFont());
    m_currentScriptLabel->setText(qvl_text(qvl_localizedString("Current Script")));
    m_versionTitle = createLabelWithFont(plain);
    m_versionTitle->setText(qvl_text(qvl_localizedString("Version:")));
    m_versionLabel = createLabelWithFont(plain);
    m_lastRunDateTitle = createLabelWithFont(plain);
    m_lastRunDateTitle->setText(qvl_text(qvl_localizedString("Last run:")));
    m_lastRunDateLabel = createLabelWithFont(plain);
    m_availableScriptsLabel = createLabelWithFont(headingFont());
    m_availableScriptsLabel->setText(qvl_text(qvl_localizedString("Available Scripts")));
    m_scriptType = new QVLDebugBadge(m_view.get());
}

void QVLDebugScriptsViewController::setupButtons() {
    m_clearOverrideButton = new QToolButton(m_view.get());
    m_clearOverrideButton->setAutoRaise(true);
    m_clearOverrideButton->setFocusPolicy(Qt::StrongFocus);
    m_clearOverrideButton->setIcon(qvl_templateIcon("quorvelClearTemplate"));
    m_clearOverrideButton->setToolTip(qvl_text(qvl_localizedString("Clear Override")));
    m_clearOverrideButton->setAccessibleName(m_clearOverrideButton->toolTip());
    m_debugButton = new QPushButton(qvl_text(qvl_localizedString("Debug")), m_view.get());
    QObject::connect(m_clearOverrideButton, &QToolButton::clicked, m_view.get(),
                     [this] { clearOverride(m_clearOverrideButton); });
    QObject::connect(m_debugButton, &QPushButton::clicked, m_view.get(), [this] { debugScript(m_debugButton); });
}

void QVLDebugScriptsViewController::setupLayout() {
    auto* const layout = new QVBoxLayout(m_view.get());
    layout->setContentsMargins(0, kTop, 0, 0);
    layout->setSpacing(kDistance);
    addRow(*layout, kHeadingSide)->addWidget(m_currentScriptLabel);

    QHBoxLayout* const versionRow = addRow(*layout, kSide);
    versionRow->addWidget(m_versionTitle);
    versionRow->addWidget(m_versionLabel);
    versionRow->addWidget(m_scriptType);
    versionRow->addWidget(m_clearOverrideButton);
    versionRow->addSpacing(kLeastGap);
    versionRow->addStretch(1);
    versionRow->addWidget(m_debugButton);

    QHBoxLayout* const lastRunRow = addRow(*layout, kSide);
    lastRunRow->addWidget(m_lastRunDateTitle);
    lastRunRow->addWidget(m_lastRunDateLabel, 1);

    layout->addSpacing(kGroupDistance - kDistance);
    addRow(*layout, kHeadingSide)->addWidget(m_availableScriptsLabel);
    layout->addWidget(m_tableView, 1);
}

void QVLDebugScriptsViewController::updateStatusLabels() {
    const QVLDebugScriptsStatus status = qvl_scriptsStatus(*m_quorvel);
    m_lastRunDateLabel->setText(qvl_text(status.lastRun));
    m_versionLabel->setText(qvl_text(status.version));
    m_scriptType->setText(qvl_text(status.scriptType));
    m_scriptType->setBackgroundGray(status.isOverride ? kOverrideBadgeGray : kPlainBadgeGray);
    const double textGray = status.isOverride ? kOverrideTextGray : kPlainTextGray;
    qvl_setTextColor(*m_versionLabel, qvl_gray(textGray, QApplication::palette()));
    if (!status.isOverride && m_clearOverrideButton->hasFocus()) {
        m_debugButton->setFocus(Qt::OtherFocusReason);
    }
    m_clearOverrideButton->setVisible(status.isOverride);
}

void QVLDebugScriptsViewController::clearOverride(QToolButton* /*sender*/) {
    if (const auto& manager = m_quorvel->scriptManager()) {
        manager->setOverrideScript(nullptr);
    }
}

void QVLDebugScriptsViewController::debugScript(QPushButton* /*sender*/) {
    const QVLDebugDesktop& desktop = QVLDebugDesktop::current();
    if (const std::optional<std::string> path = m_quorvel->generateDebugHTML()) {
        desktop.openFile(*path);
    } else {
        desktop.beep();
    }
}
