#pragma once

#include <chrono>

/// A point in time of the wall clock. Microseconds reach every date that a text of four-digit years can name, which the
/// system clock's own nanoseconds do not.
using QVLDate = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;

/// Seconds with a fraction.
using QVLTimeInterval = std::chrono::duration<double>;
