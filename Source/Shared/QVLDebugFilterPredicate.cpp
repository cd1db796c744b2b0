#include "QVLDebugFilterPredicate.h"

#include <QString>

#include <algorithm>

namespace {

bool isASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Without case and without the marks that letters carry.
std::string folded(std::string_view text) {
    std::string result(text);
    if (isASCII(text)) {
        std::transform(result.begin(), result.end(), result.begin(), lowered);
        return result;
    }
    QString letters = QString::fromStdString(result).normalized(QString::NormalizationForm_D);
    letters.removeIf([](QChar letter) { return letter.isMark(); });
    return letters.toCaseFolded().toStdString();
}

bool containsFolded(std::string_view key, const std::string& text) {
    if (!isASCII(key)) {
        return folded(key).find(text) != std::string::npos;
    }
    // Nearly every key is plain, and there may be a hundred thousand of them.
    return std::search(key.begin(), key.end(), text.begin(), text.end(),
                       [](char a, char b) { return lowered(a) == b; }) != key.end() ||
           text.empty();
}

} // namespace

QVLDebugFilterPredicate qvl_keyContains(std::string_view text) {
    return [text = folded(text)](const QVLDebugDataSourceObject& row) { return containsFolded(row.key(), text); };
}

QVLDebugFilterPredicate qvl_bothPredicates(QVLDebugFilterPredicate a, QVLDebugFilterPredicate b) {
    if (!a || !b) {
        return a ? a : b;
    }
    return [a = std::move(a), b = std::move(b)](const QVLDebugDataSourceObject& row) { return a(row) && b(row); };
}
