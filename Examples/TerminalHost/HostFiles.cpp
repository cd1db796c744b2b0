#include "HostFiles.h"

#include "HostError.h"

#include <Quorvel/QVLJSONSerialization.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include <unistd.h>

namespace host {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what, const std::string& reason) {
    throw HostError("cannot use the " + what + " '" + path + "': " + reason);
}

std::string reasonOf(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

std::string readFile(const std::string& path, const std::string& what) {
    checkIsReadable(path, what);
    std::ifstream file(path, std::ios::binary);
    std::string text;
    std::array<char, 65536> chunk{};
    while (file.read(chunk.data(), chunk.size()) || file.gcount() > 0) {
        text.append(chunk.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (file.bad()) {
        fail(path, what, "it cannot be read");
    }
    return text;
}

} // namespace

QVLJSONDictionary readJSONFile(const std::string& path, const std::string& what) {
    const QVLJSONReadResult read = QVLJSONSerialization::JSONObjectWithData(readFile(path, what));
    if (!read) {
        fail(path, what, "it is not JSON: " + read.error);
    }
    if (!read.value.isDictionary()) {
        fail(path, what, "it holds a JSON array, not an object");
    }
    return read.value.dictionaryOrEmpty();
}

std::vector<std::string> readLinesOfFile(const std::string& path, const std::string& what) {
    std::istringstream text(readFile(path, what));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

void checkIsReadable(const std::string& path, const std::string& what) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        fail(path, what, "it is a directory");
    }
    if (access(path.c_str(), R_OK) != 0) {
        fail(path, what, reasonOf(errno));
    }
}

std::string shortPath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::canonical(path, error);
    if (error) {
        return path;
    }
    const std::string fromHere = std::filesystem::proximate(whole, error).string();
    return error || fromHere.starts_with("..") ? whole.string() : fromHere;
}

} // namespace host
