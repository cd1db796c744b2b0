#pragma once

#include "QVLLocalization.h"

/// Translations by gettext from the current text domain, which is the host's own.
class QVLLinuxLocalization final : public QVLLocalization {
public:
    [[nodiscard]] std::string localizedString(const std::string& key) const override;
};
