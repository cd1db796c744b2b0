#include "QVLDebugLocalization.h"

#include "QVLPlatform.h"

std::string qvl_localizedString(const std::string& text) {
    return QVLPlatform::current()->localization->localizedString(text);
}
