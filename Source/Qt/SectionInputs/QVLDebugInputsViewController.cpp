#include "QVLDebugInputsViewController.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugInputsContent.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLDebugWindow.h"
#include "QVLInputsManager.h"
#include "QVLQuorvel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

constexpr int kRowHeight = 32;
constexpr int kBottomRowHeight = 16;
constexpr int kLeastGap = 20;

} // namespace

std::shared_ptr<QVLDebugInputsViewController>
QVLDebugInputsViewController::initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel,
                                              const std::shared_ptr<QVLInputsManager>& inputsManager) {
    return std::shared_ptr<QVLDebugInputsViewController>(new QVLDebugInputsViewController(quorvel, inputsManager));
}

QVLDebugInputsViewController::QVLDebugInputsViewController(std::shared_ptr<QVLQuorvel> quorvel,
                                                           std::shared_ptr<QVLInputsManager> inputsManager)
    : m_quorvel(std::move(quorvel)), m_inputsManager(std::move(inputsManager)) {
    loadView();
}

QVLDebugInputsViewController::~QVLDebugInputsViewController() = default;

std::string QVLDebugInputsViewController::title() const {
    return qvl_localizedString("Inputs");
}

QIcon QVLDebugInputsViewController::toolbarIcon() const {
    return qvl_templateIcon("quorvelTitlebarInputsTemplate");
}

void QVLDebugInputsViewController::loadView() {
    auto* const table = QVLDebugTableView::tableViewWithFrame({}, {{{kQVLTableColumnIdentifier, "inputs"},
                                                                    {kQVLTableColumnTitle, "Inputs"},
                                                                    {kQVLTableColumnWidth, kQVLInputsViewWidth}}});
    table->setPlainStyle();
    table->setRowHeight(kRowHeight);
    m_section = qvl_makeTableSectionView(table);
    m_generationTimeLabel = qvl_selectableLabel(view());
    m_generationTimeLabel->setMinimumHeight(kBottomRowHeight);
    m_reloadButton = qvl_lowButton(qvl_localizedString("Update Inputs Now"), view());
    m_reloadButton->setEnabled(m_inputsManager != nullptr);
    m_section.bottomRow->addWidget(m_generationTimeLabel);
    m_section.bottomRow->addSpacing(kLeastGap);
    m_section.bottomRow->addStretch(1);
    m_section.bottomRow->addWidget(m_reloadButton);

    QObject::connect(m_section.searchField, &QLineEdit::textChanged, view(), [this] { search(m_section.searchField); });
    QObject::connect(m_section.logButton, &QPushButton::clicked, view(), [this] { logData(m_section.logButton); });
    QObject::connect(m_reloadButton, &QPushButton::clicked, view(), [this] { reloadInputs(m_reloadButton); });
    m_dataSource = std::make_unique<QVLDebugInputsDataSource>(table, m_quorvel, m_inputsManager, this);
    updateGenerationTime();
}

void QVLDebugInputsViewController::search(QLineEdit* sender) {
    const std::string text = qvl_text(sender->text());
    m_dataSource->setFilterPredicate(text.empty() ? QVLDebugFilterPredicate() : qvl_keyContains(text));
}

void QVLDebugInputsViewController::logData(QPushButton* /*sender*/) {
    m_quorvel->logData();
}

void QVLDebugInputsViewController::reloadInputs(QPushButton* /*sender*/) {
    if (m_inputsManager) {
        m_inputsManager->updateInputsNow();
    }
}

void QVLDebugInputsViewController::updateGenerationTime() {
    m_generationTimeLabel->setText(qvl_text(qvl_inputsGenerationText(m_inputsManager.get())));
}

void QVLDebugInputsViewController::debugInputsDataSourceDidReload(QVLDebugInputsDataSource& /*dataSource*/) {
    updateGenerationTime();
}
