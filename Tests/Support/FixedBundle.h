#pragma once

#include "QVLLinuxBundle.h"

#include <map>
#include <optional>
#include <string>

/// The library's real resources, except for those that a test puts elsewhere or takes away.
class FixedBundle final : public QVLBundle {
public:
    /// No value takes the resource away. Set paths while no other thread looks for one.
    void setPathForResource(const std::string& name, std::optional<std::string> path) {
        m_paths[name] = std::move(path);
    }

    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name) const override {
        const auto found = m_paths.find(name);
        return found == m_paths.end() ? m_library.pathForResource(name) : found->second;
    }

    [[nodiscard]] bool hasDirectory(std::string_view name) const override { return m_library.hasDirectory(name); }

private:
    std::map<std::string, std::optional<std::string>, std::less<>> m_paths;
    QVLLinuxBundle m_library = QVLLinuxBundle::libraryBundle();
};
