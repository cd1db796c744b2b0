#pragma once

#include "QVLExport.h"

#include <algorithm>
#include <array>
#include <cstdint>

/// The address of a host, without a port. A plain value; 0.0.0.0 by default.
struct QVL_EXPORT QVLSocketAddress {
    enum class Family { IPv4, IPv6 };

    Family family = Family::IPv4;
    /// In network order. IPv4 uses the first four bytes; the others stay zero.
    std::array<std::uint8_t, 16> bytes{};

    [[nodiscard]] static QVLSocketAddress IPv4(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
        return {Family::IPv4, {a, b, c, d}};
    }
    [[nodiscard]] static QVLSocketAddress IPv6(const std::array<std::uint8_t, 16>& bytes) {
        return {Family::IPv6, bytes};
    }

    /// Whether this is 0.0.0.0 or ::, which stands for any address.
    [[nodiscard]] bool isUnspecified() const {
        return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
    }

    friend bool operator==(const QVLSocketAddress&, const QVLSocketAddress&) = default;
};
