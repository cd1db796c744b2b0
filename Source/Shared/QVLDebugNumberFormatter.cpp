#include "QVLDebugNumberFormatter.h"

#include <cmath>
#include <limits>

namespace {

/// Marks that tell the direction of writing; locales put them before signs.
QString withoutMarks(QString text) {
    constexpr char16_t kLeftToRight = 0x200E;
    constexpr char16_t kRightToLeft = 0x200F;
    constexpr char16_t kArabic = 0x061C;
    for (const char16_t mark : {kLeftToRight, kRightToLeft, kArabic}) {
        text.remove(QChar(mark));
    }
    return text;
}

/// The text with the locale's signs and digits replaced by the plain ones. Several locales do not read back the signs
/// and exponents that they write.
QString withPlainSigns(const QString& text, const QLocale& locale) {
    QString plain = withoutMarks(text);
    if (locale.decimalPoint() != ".") {
        // Here a point stands between groups, or nowhere.
        plain.replace('.', ' ');
        plain.replace(locale.decimalPoint(), ".");
    }
    if (const QString exponential = withoutMarks(locale.exponential()); !exponential.isEmpty()) {
        plain.replace(exponential, "e");
    }
    plain.replace(withoutMarks(locale.negativeSign()), "-");
    plain.replace(withoutMarks(locale.positiveSign()), "+");
    const QList<uint> zero = locale.zeroDigit().toUcs4();
    for (uint digit = 0; digit < 10; ++digit) {
        const char32_t letter = zero.value(0, '0') + digit;
        plain.replace(QString::fromUcs4(&letter, 1), QString::number(digit));
    }
    return plain;
}

/// Such a number is read as an integer, for which the shortest digits of a real one are not enough.
bool isWholeOf64Bits(double real) {
    constexpr double kLeast = -9223372036854775808.0;
    constexpr double kBeyond = 18446744073709551616.0;
    return real >= kLeast && real < kBeyond && real == std::trunc(real);
}

QVLJSONValue numberIn(const QString& text, const QLocale& locale) {
    bool isRead = false;
    if (const qlonglong whole = locale.toLongLong(text, &isRead); isRead) {
        return static_cast<std::int64_t>(whole);
    }
    if (const qulonglong natural = locale.toULongLong(text, &isRead); isRead) {
        return static_cast<std::uint64_t>(natural);
    }
    const double real = locale.toDouble(text, &isRead);
    return isRead && std::isfinite(real) ? QVLJSONValue(real) : QVLJSONValue();
}

} // namespace

QVLDebugNumberFormatter::QVLDebugNumberFormatter(const QLocale& locale) : m_locale(locale) {
    m_locale.setNumberOptions(QLocale::OmitGroupSeparator);
}

std::optional<std::string> QVLDebugNumberFormatter::stringFromNumber(const QVLJSONValue& number) const {
    if (!number.isNumber()) {
        return std::nullopt;
    }
    if (!number.isInteger() && !isWholeOf64Bits(number.doubleValue())) {
        return m_locale.toString(number.doubleValue(), 'g', QLocale::FloatingPointShortest).toStdString();
    }
    const bool isNegative = number.doubleValue() < 0;
    return (isNegative ? m_locale.toString(static_cast<qlonglong>(number.qvl_castToIntegerValue()))
                       : m_locale.toString(static_cast<qulonglong>(number.unsignedValue())))
        .toStdString();
}

QVLJSONValue QVLDebugNumberFormatter::numberFromString(std::string_view text) const {
    const QString typed = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    const QVLJSONValue number = numberIn(typed, m_locale);
    return number.isNothing() ? numberIn(withPlainSigns(typed, m_locale), QLocale::c()) : number;
}
