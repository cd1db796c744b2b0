#include "QVLDebugOutputsViewController.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugCheckBox.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugOutputsDataSource.h"
#include "QVLDebugText.h"
#include "QVLDebugWindow.h"
#include "QVLQuorvel.h"

#include <QBoxLayout>

namespace {

constexpr int kRowHeight = 32;
constexpr int kBottomRowHeight = 16;
constexpr int kSide = 20;

} // namespace

std::shared_ptr<QVLDebugOutputsViewController>
QVLDebugOutputsViewController::initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel) {
    return std::shared_ptr<QVLDebugOutputsViewController>(new QVLDebugOutputsViewController(quorvel));
}

QVLDebugOutputsViewController::QVLDebugOutputsViewController(std::shared_ptr<QVLQuorvel> quorvel)
    : QVLDebugTableViewController(std::move(quorvel)) {
    loadView();
}

QVLDebugOutputsViewController::~QVLDebugOutputsViewController() = default;

std::string QVLDebugOutputsViewController::title() const {
    return qvl_localizedString("Outputs");
}

QIcon QVLDebugOutputsViewController::toolbarIcon() const {
    return qvl_templateIcon("quorvelTitlebarOutputsTemplate");
}

void QVLDebugOutputsViewController::loadView() {
    // The identifier is misspelt for good, and the journal's table has the same.
    makeView({"outpus", "Outputs", kQVLOutputsViewWidth, kRowHeight});
    m_disableCheck = new QVLDebugCheckBox(qvl_text(qvl_localizedString("Disable all outputs")), view());
    m_disableCheck->setMinimumHeight(kBottomRowHeight);
    bottomRow().addStretch(1);
    bottomRow().addWidget(m_disableCheck);
    bottomRow().setContentsMargins(kSide, 0, kSide, 0);
    QObject::connect(m_disableCheck, &QCheckBox::clicked, view(), [this] { disableOutputs(m_disableCheck); });
    setDataSource(std::make_unique<QVLDebugOutputsDataSource>(tableView(), quorvel()));
    sectionWillDisplay();
}

void QVLDebugOutputsViewController::sectionWillDisplay() {
    m_disableCheck->setChecked(quorvel()->disableOutputs());
}

void QVLDebugOutputsViewController::windowWillReopen() {
    QVLDebugTableViewController::windowWillReopen();
    sectionWillDisplay();
}

void QVLDebugOutputsViewController::disableOutputs(QCheckBox* sender) {
    quorvel()->setDisableOutputs(sender->isChecked());
}
