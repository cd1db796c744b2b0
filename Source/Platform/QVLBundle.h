#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The library's own resource files. Any thread.
class QVLBundle {
public:
    virtual ~QVLBundle() = default;

    /// The path of a resource file, or no value when the library has none of that name.
    [[nodiscard]] virtual std::optional<std::string> pathForResource(std::string_view name) const = 0;

    /// Whether the library has a directory of resources of that name.
    [[nodiscard]] virtual bool hasDirectory(std::string_view name) const = 0;
};
