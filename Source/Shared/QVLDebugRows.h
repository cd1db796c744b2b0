#pragma once

#include "QVLDebugFilterPredicate.h"

#include <memory>
#include <vector>

using QVLDebugRows = std::vector<std::shared_ptr<QVLDebugDataSourceObject>>;

/// The rows that a table shows: those that the predicate accepts, by key ascending. Rows of equal keys keep their order.
[[nodiscard]] QVLDebugRows qvl_sortedAndFilteredRows(QVLDebugRows rows, const QVLDebugFilterPredicate& predicate);
