// Film time against the ticks of a picture track. Plain value, any thread.
#pragma once

#include "Media/CMTime.h"
#include "Media/Libav.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>

namespace stillwick {

/// Where a film's zero lies among the presentation times of its track.
struct Timeline {
    static constexpr std::int64_t farthestTick = std::numeric_limits<std::int64_t>::max() / 4;

    AVRational timeBase{1, 1};
    std::int64_t zero = 0; ///< in ticks

    /// The last tick not after `time`, and the first not before it.
    [[nodiscard]] std::int64_t tickAtOrBefore(const CMTime& time) const noexcept {
        return zero + toTicks(time, AV_ROUND_DOWN);
    }
    [[nodiscard]] std::int64_t tickAtOrAfter(const CMTime& time) const noexcept {
        return zero + toTicks(time, AV_ROUND_UP);
    }
    /// Exact in the track's time base.
    [[nodiscard]] CMTime timeOf(std::int64_t tick) const noexcept {
        return CMTime::make((tick - zero) * timeBase.num, timeBase.den);
    }
    /// For clocks: rounded to a nanosecond.
    [[nodiscard]] std::chrono::nanoseconds nanosecondsOf(std::int64_t tick) const noexcept {
        return std::chrono::nanoseconds(av_rescale_q(tick - zero, timeBase, {1, 1'000'000'000}));
    }

    /// Spans too long to be counted become `farthestTick`, or its opposite: far beyond any film,
    /// and near enough for sums.
    [[nodiscard]] std::int64_t toTicks(const CMTime& span, AVRounding rounding) const noexcept {
        const std::int64_t ticks =
            av_rescale_q_rnd(span.value, {1, span.timescale}, timeBase, rounding);
        constexpr std::int64_t overflow = std::numeric_limits<std::int64_t>::min();
        if (ticks == overflow)
            return span.value < 0 ? -farthestTick : farthestTick;
        return std::clamp(ticks, -farthestTick, farthestTick);
    }
};

} // namespace stillwick
