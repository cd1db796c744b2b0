#pragma once

#include "QVLJSONValue.h"

#include <string>
#include <vector>

/// The process's own command line without the program's name, as the kernel has it. Any thread.
[[nodiscard]] std::vector<std::string> QVLProcessArguments();

/// The user defaults that a command line carries, as pairs `-Key value`.
///
/// A key is what follows a single "-", unless that is a digit (`-5` is a number). The next argument is its value
/// whatever it begins with: JSON of any kind, else YES and NO as booleans, else text. Of pairs with the same key the
/// last one counts. Everything else is left to the host: plain words, `--option` in any form, a key at the very end,
/// and all that follows a bare `--`.
[[nodiscard]] QVLJSONDictionary QVLDefaultsFromArguments(const std::vector<std::string>& arguments);
