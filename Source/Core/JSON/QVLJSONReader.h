#pragma once

#include "QVLJSONSerialization.h"

/// Reads one JSON text of any kind at the top level; `QVLJSONSerialization` says what is accepted.
[[nodiscard]] QVLJSONReadResult QVLReadJSON(std::string_view data);
