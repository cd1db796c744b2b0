#include "QVLLinuxLocalization.h"

#include <libintl.h>

std::string QVLLinuxLocalization::localizedString(const std::string& key) const {
    // Under the empty key a catalogue keeps its own header.
    if (key.empty()) {
        return key;
    }
    const char* const text = dgettext(nullptr, key.c_str());
    return text == key.c_str() ? key : text;
}
