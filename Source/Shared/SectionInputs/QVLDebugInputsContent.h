#pragma once

#include "QVLDebugRows.h"

#include <cstddef>
#include <optional>
#include <string>

class QVLInputsManager;
class QVLQuorvel;

/// One row for each input that the host set. The manager may be missing.
[[nodiscard]] QVLDebugRows qvl_inputsRows(const QVLQuorvel& quorvel, const QVLInputsManager* inputsManager);

/// "Inputs generated in 0.012 (0.034) seconds", empty without a manager.
[[nodiscard]] std::string qvl_inputsGenerationText(const QVLInputsManager* inputsManager);

/// "0.0123s".
[[nodiscard]] std::string qvl_generationTimeText(double generationTime);

/// The user-defaults key for "Copy Defaults Key" on a row of the table; no value where there is no such row.
///
/// The row counts in the full sorted list of keys, not in what the table shows: while a filter is set, the key may be
/// another row's. That is kept on purpose.
[[nodiscard]] std::optional<std::string> qvl_inputDefaultsKey(const QVLQuorvel& quorvel, std::ptrdiff_t clickedRow);
