#pragma once

#include <Quorvel/QVLJSONValue.h>

#include <string>

namespace host {

/// A JSON object and the text that it was read from.
struct JSONFile {
    std::string text;
    QVLJSONDictionary object;
};

/// Reads a file that must hold a JSON object. Throws `HostError`, with `what` as the file's name for the user.
[[nodiscard]] JSONFile readJSONFile(const std::string& path, const std::string& what);

/// Throws `HostError` unless there is a file that can be read.
void checkIsReadable(const std::string& path, const std::string& what);

void writeFile(const std::string& path, const std::string& text);

/// The path as the user would write it here.
[[nodiscard]] std::string shortPath(const std::string& path);

} // namespace host
