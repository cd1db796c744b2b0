#pragma once

#include "QVLBundle.h"

#include <string>
#include <vector>

/// Resource files in directories, of which the first that has the file counts.
class QVLLinuxBundle final : public QVLBundle {
public:
    explicit QVLLinuxBundle(std::vector<std::string> directories) : m_directories(std::move(directories)) {}

    /// The directories that belong to this library, found from where its code was loaded: beside it in a build tree, in
    /// the data directory of the same installation otherwise.
    [[nodiscard]] static QVLLinuxBundle libraryBundle();

    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name) const override;
    [[nodiscard]] bool hasDirectory(std::string_view name) const override;

private:
    std::vector<std::string> m_directories;
};
