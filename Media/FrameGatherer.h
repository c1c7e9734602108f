// Brings frames from a film into its cache, together with their order. One thread at a time.
#pragma once

#include "Media/CMTime.h"
#include "Media/FrameCache.h"
#include "Media/FrameSource.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace stillwick {

class MediaAsset;

/// Decodes what is wanted, and keeps in the cache what comes by on the way.
///
/// What throws leaves the place in the film unknown: the next call seeks.
class FrameGatherer final {
public:
    /// A frame and the time at which it was found: the one asked for, brought into the film.
    struct Located {
        SharedFrame frame;
        CMTime time;
    };

    /// Opens the film and brings in its first frame. `announce` is called for every frame that
    /// comes into the cache. *Errors*: MediaError, as for all calls below.
    FrameGatherer(const MediaAsset& asset, std::shared_ptr<FrameCache> cache,
                  std::function<void()> announce, const std::stop_token& stop);
    ~FrameGatherer() = default;
    FrameGatherer(const FrameGatherer&) = delete;
    FrameGatherer& operator=(const FrameGatherer&) = delete;

    /// The frame shown at `time`; times past the end have the last frame.
    [[nodiscard]] Located at(const CMTime& time, const std::stop_token& stop);
    /// The first frame of the group in which `time` lies, or one nearer.
    [[nodiscard]] Located near(const CMTime& time, const std::stop_token& stop);
    /// The neighbours of a frame; null at the film's ends.
    [[nodiscard]] SharedFrame after(const SharedFrame& frame, const std::stop_token& stop);
    [[nodiscard]] SharedFrame before(const SharedFrame& frame, const std::stop_token& stop);

    /// Brings in the frame after the one of time `last`, or states that there is none. While
    /// playing, damaged frames are passed over. `seeking` withdraws the way there, `stop` the rest.
    void stepAhead(std::int64_t last, FrameSource::Damage damage, const std::stop_token& seeking,
                   const std::stop_token& stop);
    /// True where the frame after that one comes without seeking.
    [[nodiscard]] bool isPlacedAt(std::int64_t frameTime) const;

    /// Goes to the first frame of the group in which the frame before `until` lies, so that
    /// `continueFill` brings in that group's frames one after the other. False where there is none.
    [[nodiscard]] bool beginFill(std::int64_t until, const std::stop_token& stop);
    [[nodiscard]] bool isFillingUntil(std::int64_t until) const;
    /// False when that was the last.
    bool continueFill(const std::stop_token& stop);

    /// To be called after what threw.
    void forgetPlace();
    /// Empties the cache where all times of the film have changed: true then.
    [[nodiscard]] bool noticeNewTimeline();
    [[nodiscard]] Timeline timeline() const { return m_source->timeline(); }

private:
    struct Fill {
        std::int64_t until = 0;
        SharedFrame last;
    };

    void moveTo(std::int64_t tick);
    [[nodiscard]] SharedFrame goTo(const CMTime& time, const std::stop_token& stop);
    void placeAt(std::int64_t frameTime, const std::stop_token& stop);
    [[nodiscard]] SharedFrame sourceFrameAfter(std::int64_t time, FrameSource::Damage damage,
                                               const std::stop_token& stop);

    std::shared_ptr<FrameCache> m_cache;
    std::function<void()> m_announce;
    std::unique_ptr<FrameSource> m_source;
    int m_timelineRevision = 0;
    std::optional<std::int64_t> m_sourceAt; ///< the time of the frame that the source gave last
    std::optional<Fill> m_fill;
    std::int64_t m_lastIntact = 0; ///< while playing
};

} // namespace stillwick
