#pragma once

#include <functional>
#include <optional>
#include <string>

namespace host {

using LineHandler = std::function<void(std::optional<std::string> line)>;

/// Reads standard input on a thread of its own, which ends with the program, and hands each line to the main run loop;
/// no value stands for the end of input. The handler has to bear calls after its owner's end.
void readLines(LineHandler handler);

} // namespace host
