#pragma once

#include "QVLSocketAddress.h"

#include <cstdint>
#include <optional>

/// Asks the kernel's routing table how it would reach an address, and answers with reachability flags: none when there
/// is no way, and no value when the kernel cannot be asked. Sends nothing and takes microseconds. Any thread.
[[nodiscard]] std::optional<std::uint32_t> QVLLinuxRouteFlags(const QVLSocketAddress& address);
