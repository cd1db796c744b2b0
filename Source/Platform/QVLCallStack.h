#pragma once

#include <string>
#include <vector>

/// The calling thread's call stack, innermost frame first, one line a frame. Any thread.
[[nodiscard]] std::vector<std::string> QVLCallStackSymbols();
