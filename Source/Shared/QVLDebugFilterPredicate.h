#pragma once

#include "QVLDebugDataSourceObject.h"

#include <functional>
#include <string_view>

/// Decides which rows a table shows; an empty one shows all.
using QVLDebugFilterPredicate = std::function<bool(const QVLDebugDataSourceObject&)>;

/// Rows whose key contains the text, whatever the case and the diacritics of either.
[[nodiscard]] QVLDebugFilterPredicate qvl_keyContains(std::string_view text);

/// Rows that both accept; an empty predicate accepts every row.
[[nodiscard]] QVLDebugFilterPredicate qvl_bothPredicates(QVLDebugFilterPredicate a, QVLDebugFilterPredicate b);
