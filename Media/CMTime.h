// Rational media time: the one value by which a picture of a film is identified. Plain value, any
// thread.
#pragma once

#include <QString>

#include <compare>
#include <cstddef>
#include <cstdint>

namespace stillwick {

/// A time of `value / timescale` seconds, or one of the times that are not numbers.
/// A default-constructed time is invalid. A time of timescale 0 counts as the infinity of its
/// value's sign, or as indefinite for the value 0.
struct CMTime {
    /// Bits of `flags`.
    enum Flag : std::uint32_t {
        Valid = 1U << 0U,
        HasBeenRounded = 1U << 1U,
        PositiveInfinity = 1U << 2U,
        NegativeInfinity = 1U << 3U,
        Indefinite = 1U << 4U,
    };

    std::int64_t value = 0;
    std::int32_t timescale = 0;
    std::uint32_t flags = 0;
    std::int64_t epoch = 0;

    [[nodiscard]] static constexpr CMTime make(std::int64_t value,
                                               std::int32_t timescale) noexcept {
        return {value, timescale, Valid, 0};
    }
    /// The nearest time at `timescale` to `seconds`, halves away from zero; flagged as rounded
    /// where it is not exact. Indefinite for NaN, infinite where the value does not fit 64 bits,
    /// invalid for a timescale that is not positive.
    [[nodiscard]] static CMTime fromSeconds(double seconds, std::int32_t timescale) noexcept;
    [[nodiscard]] static constexpr CMTime zero() noexcept { return make(0, 1); }
    [[nodiscard]] static constexpr CMTime invalid() noexcept { return {}; }
    [[nodiscard]] static constexpr CMTime indefinite() noexcept {
        return {0, 0, Valid | Indefinite, 0};
    }
    [[nodiscard]] static constexpr CMTime positiveInfinity() noexcept {
        return {0, 0, Valid | PositiveInfinity, 0};
    }
    [[nodiscard]] static constexpr CMTime negativeInfinity() noexcept {
        return {0, 0, Valid | NegativeInfinity, 0};
    }

    [[nodiscard]] constexpr bool isValid() const noexcept { return (flags & Valid) != 0; }
    [[nodiscard]] constexpr bool isNumeric() const noexcept {
        return (flags & (Valid | PositiveInfinity | NegativeInfinity | Indefinite)) == Valid;
    }

    /// Seconds in double precision; NaN or infinite for times that are not numbers.
    [[nodiscard]] double seconds() const noexcept;
    /// Seconds in double precision, or 0 for a time that is invalid, not numeric, NaN or infinite.
    [[nodiscard]] double safeSeconds() const noexcept;
    /// Minutes, seconds and truncated milliseconds, "62:05.250"; minutes widen past 99.
    /// Seconds past 64 bits show as the largest number.
    [[nodiscard]] QString displayString() const;
    /// Hours, minutes, seconds and truncated milliseconds, "01-02-05-250"; as `displayString`.
    [[nodiscard]] QString fileNameString() const;
};

/// Exact order of two times, whatever their timescales: 1/2 and 2/4 are equivalent.
/// Negative infinity comes before all numbers, then the numbers, indefinite, positive infinity, and
/// last an invalid time. Numbers of a smaller epoch come first; rounding flags do not count.
[[nodiscard]] std::weak_ordering operator<=>(const CMTime& a, const CMTime& b) noexcept;
[[nodiscard]] bool operator==(const CMTime& a, const CMTime& b) noexcept;

/// Sum and difference, exact wherever the common timescale fits 32 bits and the value 64; else
/// rounded to the finer timescale of the two, halves away from zero, and flagged as rounded if that
/// changed it or an operand was. A value past 64 bits becomes the infinity of its sign.
/// *Errors*: an operand that is not a number gives the result of the same kind (invalid, then
/// indefinite, lead); opposite infinities, and numbers of different epochs, give an indefinite
/// time.
[[nodiscard]] CMTime operator+(const CMTime& a, const CMTime& b) noexcept;
[[nodiscard]] CMTime operator-(const CMTime& a, const CMTime& b) noexcept;
[[nodiscard]] CMTime operator-(const CMTime& a) noexcept;

/// Agrees with `==`: equivalent times have the same hash.
[[nodiscard]] std::size_t qHash(const CMTime& time, std::size_t seed = 0) noexcept;

} // namespace stillwick
