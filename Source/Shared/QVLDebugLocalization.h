#pragma once

#include <string>

/// The host's text for one of the console's English texts; the English text where the host has no other. Any thread.
[[nodiscard]] std::string qvl_localizedString(const std::string& text);
