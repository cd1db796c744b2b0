#include "QVLDebugInputsViewController.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugInputsContent.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLDebugWindow.h"
#include "QVLInputsManager.h"

#include <QBoxLayout>
#include <QLabel>
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
    : QVLDebugTableViewController(std::move(quorvel)), m_inputsManager(std::move(inputsManager)) {
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
    makeView({"inputs", "Inputs", kQVLInputsViewWidth, kRowHeight});
    m_generationTimeLabel = qvl_selectableLabel(view());
    m_generationTimeLabel->setMinimumHeight(kBottomRowHeight);
    m_reloadButton = qvl_lowButton(qvl_localizedString("Update Inputs Now"), view());
    m_reloadButton->setEnabled(m_inputsManager != nullptr);
    bottomRow().addWidget(m_generationTimeLabel);
    bottomRow().addSpacing(kLeastGap);
    bottomRow().addStretch(1);
    bottomRow().addWidget(m_reloadButton);
    QObject::connect(m_reloadButton, &QPushButton::clicked, view(), [this] { reloadInputs(m_reloadButton); });
    setDataSource(std::make_unique<QVLDebugInputsDataSource>(tableView(), quorvel(), m_inputsManager, this));
    updateGenerationTime();
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
