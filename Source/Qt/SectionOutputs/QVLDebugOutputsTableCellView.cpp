#include "QVLDebugOutputsTableCellView.h"

#include "QVLQuorvel.h"

QVLJSONDictionary QVLDebugOutputsTableCellView::overrides() const {
    return quorvel()->outputsOverrides();
}

void QVLDebugOutputsTableCellView::setOverrides(const QVLJSONDictionary& overrides) {
    quorvel()->setOutputsOverrides(overrides);
}
