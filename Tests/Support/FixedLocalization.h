#pragma once

#include "QVLLocalization.h"

#include <map>
#include <string>

/// The translations that a test gives; every other key is its own text.
class FixedLocalization final : public QVLLocalization {
public:
    std::map<std::string, std::string> texts;

    [[nodiscard]] std::string localizedString(const std::string& key) const override {
        const auto found = texts.find(key);
        return found == texts.end() ? key : found->second;
    }
};
