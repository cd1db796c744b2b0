#pragma once

#include "QVLDebugRows.h"

#include <cstddef>
#include <optional>
#include <string>

class QVLQuorvel;

/// One row for each output key of the engine, with the value as the host reads it: overrides applied.
[[nodiscard]] QVLDebugRows qvl_outputsRows(const QVLQuorvel& quorvel);

/// The user-defaults key for "Copy Defaults Key" on a row of the table; no value where there is no such row.
///
/// The row counts in all of the engine's keys in the engine's own order, whatever that is: other than the inputs they are
/// not sorted here. That is kept on purpose.
[[nodiscard]] std::optional<std::string> qvl_outputDefaultsKey(const QVLQuorvel& quorvel, std::ptrdiff_t clickedRow);
