#include "HostDirectory.h"

#include "HostError.h"
#include "HostFiles.h"

#include <Quorvel/Quorvel.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace host {

namespace {

std::string makeTemporaryDirectory() {
    std::error_code error;
    std::string path = (std::filesystem::temp_directory_path(error) / "quorvel-host-XXXXXX").string();
    if (error || !mkdtemp(path.data())) {
        throw HostError("cannot make a temporary directory; --directory names another place");
    }
    return path;
}

} // namespace

HostDirectory::HostDirectory(const std::optional<std::string>& directory)
    : m_path(directory ? *directory : makeTemporaryDirectory()), m_isTemporary(!directory) {
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(m_path) / kQVLContentDirectory, error);
    if (error) {
        throw HostError("cannot use the directory '" + m_path + "': " + error.message());
    }
}

HostDirectory::~HostDirectory() {
    if (m_isTemporary) {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
}

void HostDirectory::setJournals(const std::string& text) const {
    writeFile((std::filesystem::path(m_path) / kQVLContentDirectory / kQVLJournalsFile).string(), text);
}

} // namespace host
