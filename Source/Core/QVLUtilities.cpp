#include "QVLUtilities.h"

#include "QVLPlatform.h"

#include <array>

namespace {

constexpr const char* kImageBox = "QVLBox.bundle";
constexpr std::array<const char*, 2> kImageTypes = {".svg", ".png"};

std::optional<std::string> imageInside(const QVLBundle& bundle, const std::string& name) {
    for (const char* type : kImageTypes) {
        if (auto path = bundle.pathForResource(name + type)) {
            return path;
        }
    }
    return std::nullopt;
}

} // namespace

std::shared_ptr<const QVLBundle> QVLUtilities::quorvelBundle() {
    return QVLPlatform::current()->bundle;
}

std::optional<std::string> QVLUtilities::imageNamed(const std::string& name) {
    const std::shared_ptr<const QVLBundle> bundle = quorvelBundle();
    return imageInside(*bundle, bundle->hasDirectory(kImageBox) ? kImageBox + ("/" + name) : name);
}
