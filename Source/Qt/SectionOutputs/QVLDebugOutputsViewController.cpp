#include "QVLDebugOutputsViewController.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugCheckBox.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLDebugWindow.h"
#include "QVLQuorvel.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

namespace {

constexpr int kRowHeight = 32;
constexpr int kBottomRowHeight = 16;

} // namespace

std::shared_ptr<QVLDebugOutputsViewController>
QVLDebugOutputsViewController::initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel) {
    return std::shared_ptr<QVLDebugOutputsViewController>(new QVLDebugOutputsViewController(quorvel));
}

QVLDebugOutputsViewController::QVLDebugOutputsViewController(std::shared_ptr<QVLQuorvel> quorvel)
    : m_quorvel(std::move(quorvel)) {
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
    auto* const table = QVLDebugTableView::tableViewWithFrame({}, {{{kQVLTableColumnIdentifier, "outpus"},
                                                                    {kQVLTableColumnTitle, "Outputs"},
                                                                    {kQVLTableColumnWidth, kQVLOutputsViewWidth}}});
    table->setPlainStyle();
    table->setRowHeight(kRowHeight);
    m_section = qvl_makeTableSectionView(table);
    m_disableCheck = new QVLDebugCheckBox(qvl_text(qvl_localizedString("Disable all outputs")), view());
    m_disableCheck->setMinimumHeight(kBottomRowHeight);
    m_section.bottomRow->addStretch(1);
    m_section.bottomRow->addWidget(m_disableCheck);

    QObject::connect(m_section.searchField, &QLineEdit::textChanged, view(), [this] { search(m_section.searchField); });
    QObject::connect(m_section.logButton, &QPushButton::clicked, view(), [this] { logData(m_section.logButton); });
    QObject::connect(m_disableCheck, &QCheckBox::clicked, view(), [this] { disableOutputs(m_disableCheck); });
    m_dataSource = std::make_unique<QVLDebugOutputsDataSource>(table, m_quorvel);
    sectionWillDisplay();
}

void QVLDebugOutputsViewController::sectionWillDisplay() {
    m_disableCheck->setChecked(m_quorvel->disableOutputs());
}

void QVLDebugOutputsViewController::search(QLineEdit* sender) {
    const std::string text = qvl_text(sender->text());
    m_dataSource->setFilterPredicate(text.empty() ? QVLDebugFilterPredicate() : qvl_keyContains(text));
}

void QVLDebugOutputsViewController::logData(QPushButton* /*sender*/) {
    m_quorvel->logData();
}

void QVLDebugOutputsViewController::disableOutputs(QCheckBox* sender) {
    m_quorvel->setDisableOutputs(sender->isChecked());
}
