#pragma once

#include "QVLDate.h"

/// Tells the time of day. Any thread.
class QVLClock {
public:
    virtual ~QVLClock() = default;
    [[nodiscard]] virtual QVLDate now() const = 0;
};
