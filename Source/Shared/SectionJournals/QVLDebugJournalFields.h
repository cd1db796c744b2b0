#pragma once

#include "QVLDebugValue.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QVLJournalEvent;
class QVLJournalFlag;

/// One editable field of a journal record.
struct QVLDebugJournalField {
    std::string name;
    QVLDebugValue value;
    QVLDebugValueType type;
    /// Writes straight into the record. Nothing and null empty the field.
    std::function<void(const QVLDebugValue&)> write;
};

// The fields of a record as they are now.
[[nodiscard]] std::vector<QVLDebugJournalField> qvl_fieldsForEvent(const std::shared_ptr<QVLJournalEvent>& event);
[[nodiscard]] std::vector<QVLDebugJournalField> qvl_fieldsForFlag(const std::shared_ptr<QVLJournalFlag>& flag);
