#include "QVLDebugRows.h"

#include <algorithm>

QVLDebugRows qvl_sortedAndFilteredRows(QVLDebugRows rows, const QVLDebugFilterPredicate& predicate) {
    if (predicate) {
        std::erase_if(rows, [&](const auto& row) { return !predicate(*row); });
    }
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a->key() < b->key(); });
    return rows;
}
