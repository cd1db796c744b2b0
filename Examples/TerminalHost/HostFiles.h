#pragma once

#include <Quorvel/QVLJSONValue.h>

#include <string>
#include <vector>

namespace host {

/// Reads a file that must hold a JSON object. Throws `HostError`, with `what` as the file's name for the user.
[[nodiscard]] QVLJSONDictionary readJSONFile(const std::string& path, const std::string& what);

/// The lines of a text file. Throws `HostError` likewise.
[[nodiscard]] std::vector<std::string> readLinesOfFile(const std::string& path, const std::string& what);

/// Throws `HostError` unless there is a file that can be read.
void checkIsReadable(const std::string& path, const std::string& what);

/// The path as the user would write it here.
[[nodiscard]] std::string shortPath(const std::string& path);

} // namespace host
