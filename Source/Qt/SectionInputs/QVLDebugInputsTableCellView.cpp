#include "QVLDebugInputsTableCellView.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugInputsContent.h"
#include "QVLDebugInputsDataSourceObject.h"
#include "QVLDebugText.h"
#include "QVLQuorvel.h"

#include <QHBoxLayout>
#include <QLabel>

QVLDebugInputsTableCellView::QVLDebugInputsTableCellView(const std::shared_ptr<QVLQuorvel>& quorvel, QWidget* parent)
    : QVLDebugTableCellView(quorvel, parent), m_generationTimeLabel(qvl_selectableLabel(this)) {
    rowLayout()->addWidget(m_generationTimeLabel);
}

void QVLDebugInputsTableCellView::reloadData() {
    QVLDebugTableCellView::reloadData();
    if (const auto row = std::dynamic_pointer_cast<QVLDebugInputsDataSourceObject>(objectValue())) {
        m_generationTimeLabel->setText(qvl_text(qvl_generationTimeText(row->generationTime())));
    }
}

QVLJSONDictionary QVLDebugInputsTableCellView::overrides() const {
    return quorvel()->inputsOverrides();
}

void QVLDebugInputsTableCellView::setOverrides(const QVLJSONDictionary& overrides) {
    quorvel()->setInputsOverrides(overrides);
}
