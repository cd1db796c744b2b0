#pragma once

#include "QVLJSONValue.h"

#include <QLocale>

#include <optional>
#include <string>
#include <string_view>

/// Numbers as the user's locale writes them. Reads back exactly what it writes. A value; any thread.
class QVLDebugNumberFormatter final {
public:
    explicit QVLDebugNumberFormatter(const QLocale& locale = QLocale());

    /// Without group separators; no value for what is no number.
    [[nodiscard]] std::optional<std::string> stringFromNumber(const QVLJSONValue& number) const;

    /// Whole numbers of 64 bits exactly, others as doubles; group separators are understood. Nothing for other text,
    /// and for numbers beyond a double's range, which JSON does not have.
    [[nodiscard]] QVLJSONValue numberFromString(std::string_view text) const;

private:
    QLocale m_locale;
};
