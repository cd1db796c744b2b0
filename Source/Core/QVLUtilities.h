#pragma once

#include "QVLBundle.h"
#include "QVLExport.h"

#include <memory>
#include <optional>
#include <string>

/// Finds the library's own resources. Any thread.
class QVL_EXPORT QVLUtilities final {
public:
    /// The library's resource files.
    [[nodiscard]] static std::shared_ptr<const QVLBundle> quorvelBundle();

    /// The path of an image: out of the box of images "QVLBox.bundle" when the library has one, else out of the
    /// library's resources. No value when there is no such image.
    [[nodiscard]] static std::optional<std::string> imageNamed(const std::string& name);
};
