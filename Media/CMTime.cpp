#include "Media/CMTime.h"

#include <QHashFunctions>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace stillwick {

namespace {

/// Wide enough for every product below: a 64-bit value times two 31-bit timescales is under 2^126.
__extension__ using Wide = __int128;

constexpr Wide largestValue = std::numeric_limits<std::int64_t>::max();
constexpr Wide smallestValue = std::numeric_limits<std::int64_t>::min();

/// What a time is, in the order in which times sort.
enum class Kind { NegativeInfinity, Number, Indefinite, PositiveInfinity, Invalid };

Kind kindOf(const CMTime& time) {
    if (!time.isValid())
        return Kind::Invalid;
    if ((time.flags & CMTime::Indefinite) != 0)
        return Kind::Indefinite;
    if ((time.flags & CMTime::PositiveInfinity) != 0)
        return Kind::PositiveInfinity;
    if ((time.flags & CMTime::NegativeInfinity) != 0)
        return Kind::NegativeInfinity;
    if (time.timescale != 0)
        return Kind::Number;
    if (time.value == 0)
        return Kind::Indefinite;
    return time.value > 0 ? Kind::PositiveInfinity : Kind::NegativeInfinity;
}

CMTime ofKind(Kind kind) {
    switch (kind) {
    case Kind::NegativeInfinity:
        return CMTime::negativeInfinity();
    case Kind::PositiveInfinity:
        return CMTime::positiveInfinity();
    case Kind::Invalid:
        return CMTime::invalid();
    case Kind::Number:
    case Kind::Indefinite:
        break;
    }
    return CMTime::indefinite();
}

Kind opposite(Kind kind) {
    if (kind == Kind::PositiveInfinity)
        return Kind::NegativeInfinity;
    return kind == Kind::NegativeInfinity ? Kind::PositiveInfinity : kind;
}

/// A number's value over a timescale that is never negative.
struct Fraction {
    Wide value;
    Wide timescale;
};

Fraction fractionOf(const CMTime& time) {
    if (time.timescale < 0)
        return {-Wide{time.value}, -Wide{time.timescale}};
    return {Wide{time.value}, Wide{time.timescale}};
}

Wide greatestCommonDivisor(Wide a, Wide b) {
    while (b != 0) {
        const Wide rest = a % b;
        a = b;
        b = rest;
    }
    return a < 0 ? -a : a;
}

/// The nearest integer to `value / divisor`, halves away from zero. The divisor is positive.
Wide dividedToNearest(Wide value, Wide divisor) {
    const Wide rest = value % divisor;
    const Wide away = value < 0 ? -1 : 1;
    const Wide size = rest < 0 ? -rest : rest;
    return value / divisor + (size >= divisor - size ? away : 0);
}

/// The time of that value, or the infinity of its sign where 64 bits do not hold it.
CMTime timeOf(Wide value, Wide timescale, std::uint32_t roundedFlag, std::int64_t epoch = 0) {
    if (value > largestValue)
        return CMTime::positiveInfinity();
    if (value < smallestValue)
        return CMTime::negativeInfinity();
    return {static_cast<std::int64_t>(value), static_cast<std::int32_t>(timescale),
            CMTime::Valid | roundedFlag, epoch};
}

CMTime sumOfNumbers(const CMTime& a, const Fraction& x, const CMTime& b, const Fraction& y) {
    const Wide common = x.timescale / greatestCommonDivisor(x.timescale, y.timescale) * y.timescale;
    const Wide sum = x.value * (common / x.timescale) + y.value * (common / y.timescale);
    const std::uint32_t inherited = (a.flags | b.flags) & CMTime::HasBeenRounded;
    if (common <= std::numeric_limits<std::int32_t>::max())
        return timeOf(sum, common, inherited, a.epoch);
    // 2^31 is the one timescale, that of the smallest negative number, that has no positive form.
    const Wide finer = std::min<Wide>(std::max(x.timescale, y.timescale),
                                      std::numeric_limits<std::int32_t>::max());
    const Wide value = dividedToNearest(sum * finer, common);
    const bool exact = value * common == sum * finer;
    return timeOf(value, finer, exact ? inherited : std::uint32_t{CMTime::HasBeenRounded}, a.epoch);
}

CMTime sumOfOthers(Kind a, Kind b) {
    if (a == Kind::Invalid || b == Kind::Invalid)
        return CMTime::invalid();
    if (a == Kind::Number)
        return ofKind(b);
    if (b == Kind::Number || a == b)
        return ofKind(a);
    return CMTime::indefinite();
}

/// The nearest integer to `seconds * timescale`, worked out on the bits of the double; `exact`
/// tells whether nothing was rounded. Only for products under 2^64.
Wide product(double seconds, std::int32_t timescale, bool& exact) {
    constexpr int mantissaBits = std::numeric_limits<double>::digits;
    int exponent = 0;
    const double mantissa = std::frexp(seconds, &exponent);
    Wide value =
        Wide{static_cast<std::int64_t>(std::ldexp(mantissa, mantissaBits))} * Wide{timescale};
    exponent -= mantissaBits;
    exact = true;
    if (exponent >= 0)
        return value * (Wide{1} << exponent);
    constexpr int widestShift = 125;
    if (exponent < -widestShift) {
        exact = value == 0;
        return 0;
    }
    const Wide divisor = Wide{1} << -exponent;
    exact = value % divisor == 0;
    return dividedToNearest(value, divisor);
}

/// A time cut into the parts that are shown. Whole seconds are truncated toward zero while the
/// fraction is measured from the floor: the two differ only for negative times.
struct Parts {
    long long wholeSeconds;
    int milliseconds;
};

Parts partsOf(const CMTime& time) {
    // 2^63, which the largest value becomes as a double: no time is longer, but one may be as long.
    constexpr double limit = 9223372036854775808.0;
    const double seconds = time.safeSeconds();
    if (seconds >= limit)
        return {std::numeric_limits<long long>::max(), 0};
    return {static_cast<long long>(seconds),
            static_cast<int>((seconds - std::floor(seconds)) * 1000.0)};
}

} // namespace

CMTime CMTime::fromSeconds(double seconds, std::int32_t timescale) noexcept {
    if (timescale <= 0)
        return invalid();
    if (std::isnan(seconds))
        return indefinite();
    constexpr double past64Bits = 18446744073709551616.0; // 2^64, where no rounding matters
    if (std::abs(seconds) * timescale >= past64Bits)
        return seconds > 0 ? positiveInfinity() : negativeInfinity();
    bool exact = true;
    const Wide value = product(seconds, timescale, exact);
    return timeOf(value, timescale, exact ? 0U : std::uint32_t{HasBeenRounded});
}

double CMTime::seconds() const noexcept {
    switch (kindOf(*this)) {
    case Kind::Number:
        return static_cast<double>(value) / timescale;
    case Kind::PositiveInfinity:
        return std::numeric_limits<double>::infinity();
    case Kind::NegativeInfinity:
        return -std::numeric_limits<double>::infinity();
    case Kind::Indefinite:
    case Kind::Invalid:
        break;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

double CMTime::safeSeconds() const noexcept {
    const double result = seconds();
    return std::isfinite(result) ? result : 0.0;
}

QString CMTime::displayString() const {
    const Parts parts = partsOf(*this);
    return QString::asprintf("%02lld:%02lld.%03d", parts.wholeSeconds / 60, parts.wholeSeconds % 60,
                             parts.milliseconds);
}

QString CMTime::fileNameString() const {
    const Parts parts = partsOf(*this);
    return QString::asprintf("%02lld-%02lld-%02lld-%03d", parts.wholeSeconds / 3600,
                             parts.wholeSeconds % 3600 / 60, parts.wholeSeconds % 60,
                             parts.milliseconds);
}

std::weak_ordering operator<=>(const CMTime& a, const CMTime& b) noexcept {
    const Kind kind = kindOf(a);
    if (const auto byKind = kind <=> kindOf(b); std::is_neq(byKind) || kind != Kind::Number)
        return byKind;
    if (const auto byEpoch = a.epoch <=> b.epoch; std::is_neq(byEpoch))
        return byEpoch;
    const Fraction x = fractionOf(a);
    const Fraction y = fractionOf(b);
    const Wide left = x.value * y.timescale;
    const Wide right = y.value * x.timescale;
    if (left == right)
        return std::weak_ordering::equivalent;
    return left < right ? std::weak_ordering::less : std::weak_ordering::greater;
}

bool operator==(const CMTime& a, const CMTime& b) noexcept {
    return std::is_eq(a <=> b);
}

CMTime operator+(const CMTime& a, const CMTime& b) noexcept {
    const Kind x = kindOf(a);
    const Kind y = kindOf(b);
    if (x != Kind::Number || y != Kind::Number)
        return sumOfOthers(x, y);
    if (a.epoch != b.epoch)
        return CMTime::indefinite();
    return sumOfNumbers(a, fractionOf(a), b, fractionOf(b));
}

CMTime operator-(const CMTime& a, const CMTime& b) noexcept {
    const Kind x = kindOf(a);
    const Kind y = kindOf(b);
    if (x != Kind::Number || y != Kind::Number)
        return sumOfOthers(x, opposite(y));
    if (a.epoch != b.epoch)
        return CMTime::indefinite();
    Fraction subtrahend = fractionOf(b);
    subtrahend.value = -subtrahend.value;
    return sumOfNumbers(a, fractionOf(a), b, subtrahend);
}

CMTime operator-(const CMTime& a) noexcept {
    return CMTime{0, 1, CMTime::Valid, a.epoch} - a;
}

std::size_t qHash(const CMTime& time, std::size_t seed) noexcept {
    const Kind kind = kindOf(time);
    if (kind != Kind::Number)
        return ::qHash(static_cast<int>(kind), seed);
    const Fraction fraction = fractionOf(time);
    const Wide divisor = greatestCommonDivisor(fraction.value, fraction.timescale);
    return qHashMulti(seed, static_cast<quint64>(fraction.value / divisor),
                      static_cast<quint64>(fraction.timescale / divisor), time.epoch);
}

} // namespace stillwick
