#pragma once

#include "QVLDebugRows.h"

#include <set>
#include <string>
#include <string_view>

class QVLJournals;

/// The keys of every event and flag, each once.
[[nodiscard]] std::set<std::string> qvl_allJournalsKeys(const QVLJournals& journals);

/// A row for each event and one for each flag.
[[nodiscard]] QVLDebugRows qvl_journalRows(QVLJournals& journals);

/// What the journal table shows for a search text: never an empty record.
[[nodiscard]] QVLDebugFilterPredicate qvl_journalFilterPredicate(std::string_view searchText);
