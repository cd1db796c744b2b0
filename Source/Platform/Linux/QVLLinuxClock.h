#pragma once

#include "QVLClock.h"

/// The system's wall clock.
class QVLLinuxClock final : public QVLClock {
public:
    [[nodiscard]] QVLDate now() const override;
};
