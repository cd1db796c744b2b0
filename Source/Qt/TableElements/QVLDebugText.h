#pragma once

#include <QString>

#include <string>
#include <string_view>

/// The library's texts, which are UTF-8, and Qt's.
[[nodiscard]] inline QString qvl_text(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline std::string qvl_text(const QString& text) {
    return text.toStdString();
}
