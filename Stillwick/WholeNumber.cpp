#include "Stillwick/WholeNumber.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

namespace stillwick {

namespace {

/// None where not all of the text is a whole number in plain digits that fits 64 bits.
std::optional<qint64> plainNumber(QByteArrayView text) {
    qint64 value = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), value);
    return error == std::errc() && end == text.end() ? std::optional(value) : std::nullopt;
}

/// The power of ten behind an e. One that does not fit 64 bits is as good as a very large one.
qint64 exponentOf(QByteArrayView digits) {
    constexpr qint64 beyondAnyText = qint64(1) << 60;
    const bool isNegative = digits.startsWith('-');
    if (digits.startsWith('+'))
        digits = digits.sliced(1);
    return plainNumber(digits).value_or(isNegative ? -beyondAnyText : beyondAnyText);
}

} // namespace

std::optional<qint64> wholeNumber(QByteArrayView number) {
    if (const auto plain = plainNumber(number))
        return plain;
    const auto* const mantissaEnd = std::find_if(
        number.begin(), number.end(), [](char sign) { return sign == 'e' || sign == 'E'; });
    const auto* const point = std::find(number.begin(), mantissaEnd, '.');
    std::string digits(number.begin(), point);
    qint64 exponent = mantissaEnd == number.end() ? 0 : exponentOf({mantissaEnd + 1, number.end()});
    if (point != mantissaEnd) {
        digits.append(point + 1, mantissaEnd);
        exponent -= mantissaEnd - point - 1;
    }
    const auto lastDigit = digits.find_last_not_of("0-");
    if (lastDigit == std::string::npos)
        return 0;
    exponent += qint64(digits.size() - 1 - lastDigit);
    constexpr qint64 mostZeros = 18;
    if (exponent < 0 || exponent > mostZeros)
        return std::nullopt;
    digits.resize(lastDigit + 1);
    digits.append(std::size_t(exponent), '0');
    return plainNumber(digits);
}

} // namespace stillwick
