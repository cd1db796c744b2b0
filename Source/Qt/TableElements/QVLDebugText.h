#pragma once

#include <QString>
#include <QStringDecoder>

#include <string>
#include <string_view>

/// The library's texts, which are UTF-8, and Qt's.
[[nodiscard]] inline QString qvl_text(std::string_view text) {
    // Unlike `QString::fromUtf8` it keeps a byte order mark, which is as much of a text as any other character.
    return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(
        QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

[[nodiscard]] inline std::string qvl_text(const QString& text) {
    return text.toStdString();
}
