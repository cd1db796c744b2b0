#pragma once

#include <string>

namespace host {

/// A file of the sample data: beside the program, else where the program was built from.
[[nodiscard]] std::string sampleDataPath(const std::string& name);

} // namespace host
