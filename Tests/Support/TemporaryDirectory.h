#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include <stdlib.h>

/// A fresh directory that is removed, with all that it holds, when this goes.
class TemporaryDirectory final {
public:
    TemporaryDirectory() : m_path((std::filesystem::temp_directory_path() / "quorvel-tests-XXXXXX").string()) {
        if (!::mkdtemp(m_path.data())) {
            throw std::runtime_error("no temporary directory at " + m_path);
        }
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// The path of an item in the directory.
    [[nodiscard]] std::string path(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};
