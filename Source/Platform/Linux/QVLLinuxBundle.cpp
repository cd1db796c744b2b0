#include "QVLLinuxBundle.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <dlfcn.h>
#include <link.h>

namespace fs = std::filesystem;

namespace {

/// The file that this code was loaded from.
fs::path codePath() {
    static const char anchor = 0;
    Dl_info info = {};
    void* extra = nullptr;
    const bool isFound = dladdr1(&anchor, &info, &extra, RTLD_DL_LINKMAP) != 0;
    const auto* const loaded = static_cast<const link_map*>(extra);
    // The program itself, which the library may be linked into, stands in the list without a name.
    const bool hasName = isFound && loaded && loaded->l_name && *loaded->l_name;
    return hasName ? loaded->l_name : "/proc/self/exe";
}

} // namespace

QVLLinuxBundle QVLLinuxBundle::libraryBundle() {
    std::error_code error;
    // Links are resolved and the path made absolute now: the working directory may change.
    const fs::path directory = fs::canonical(codePath(), error).parent_path();
    return QVLLinuxBundle({
        (directory / QVL_RESOURCE_SUBDIRECTORY).lexically_normal().string(),
        (directory / QVL_RESOURCES_RELATIVE_PATH).lexically_normal().string(),
    });
}

std::optional<std::string> QVLLinuxBundle::pathForResource(std::string_view name) const {
    for (const std::string& directory : m_directories) {
        std::error_code error;
        const fs::path path = fs::path(directory) / name;
        if (fs::is_regular_file(path, error)) {
            return path.string();
        }
    }
    return std::nullopt;
}

bool QVLLinuxBundle::hasDirectory(std::string_view name) const {
    return std::any_of(m_directories.begin(), m_directories.end(), [name](const std::string& directory) {
        std::error_code error;
        return fs::is_directory(fs::path(directory) / name, error);
    });
}
