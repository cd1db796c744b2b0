#include "QVLUserDefaults.h"

#include "QVLPlatform.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace {

bool isSameIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char left, unsigned char right) {
        return std::tolower(left) == std::tolower(right);
    });
}

} // namespace

QVLUserDefaults::~QVLUserDefaults() = default;

std::shared_ptr<QVLUserDefaults> QVLUserDefaults::standardUserDefaults() {
    return QVLPlatform::current()->userDefaults;
}

QVLJSONValue QVLUserDefaults::objectForKey(std::string_view key) const {
    return dictionaryRepresentation().valueForKey(key);
}

bool QVLUserDefaults::boolForKey(std::string_view key) const {
    static constexpr std::array<std::string_view, 3> kTrueTexts = {"yes", "true", "1"};
    const QVLJSONValue value = objectForKey(key);
    if (!value.isString()) {
        return value.qvl_castToBoolValue();
    }
    return std::any_of(kTrueTexts.begin(), kTrueTexts.end(),
                       [&](std::string_view text) { return isSameIgnoringCase(text, value.stringView()); });
}
