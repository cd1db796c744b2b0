#include "HostDirectory.h"

#include "HostError.h"

#include <Quorvel/Quorvel.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <unistd.h>

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

HostDirectory::HostDirectory(const std::optional<std::string>& directory, const std::string& subdirectory)
    : m_path(directory ? *directory : makeTemporaryDirectory()),
      m_engineDirectory(m_path + subdirectory),
      m_isTemporary(!directory) {
    const std::filesystem::path content = std::filesystem::path(m_engineDirectory) / kQVLContentDirectory;
    std::error_code error;
    std::filesystem::create_directories(content, error);
    if (!error && access(content.c_str(), W_OK) != 0) {
        error.assign(errno, std::generic_category());
    }
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

void HostDirectory::setJournals(const QVLJSONDictionary& journals) const {
    const std::filesystem::path content = std::filesystem::path(m_engineDirectory) / kQVLContentDirectory;
    // Replaced whole, so that a host that is killed meanwhile leaves no half of it to the next one.
    QVLJSONStore::sharedStore()->saveJSONObject(journals, (content / kQVLJournalsFile).string());
}

} // namespace host
