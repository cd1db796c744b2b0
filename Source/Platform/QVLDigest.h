#pragma once

#include <array>
#include <cstdint>
#include <string_view>

using QVLSHA1Digest = std::array<std::uint8_t, 20>;

/// The SHA-1 digest of the bytes. Any thread.
[[nodiscard]] QVLSHA1Digest QVLSHA1(std::string_view data);
