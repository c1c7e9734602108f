// Fills a film's frame cache from a thread of its own. Requests come from one other thread.
#pragma once

#include "Media/FrameGatherer.h"
#include "Media/MediaError.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace stillwick {

/// Answers what is asked for, and between requests decodes what will be asked for next: ahead in
/// the direction of travel, and the group of pictures before.
class FrameLoader final {
public:
    enum class Course {
        Resting,
        Forward,  ///< stepping on
        Backward, ///< stepping back
        Playing,
    };
    using Located = FrameGatherer::Located;

    FrameLoader(std::shared_ptr<const MediaAsset> asset, std::shared_ptr<FrameCache> cache);
    /// Stops within a packet's decoding and joins.
    ~FrameLoader();
    FrameLoader(const FrameLoader&) = delete;
    FrameLoader& operator=(const FrameLoader&) = delete;

    /// The frame shown at `time`; times past the end have the last frame. *Errors*: MediaError; of
    /// opening too. *Thread*: blocks; `stop` ends it soon with Cancelled.
    [[nodiscard]] Located frameAt(const CMTime& time, const std::stop_token& stop);
    /// A frame near before `time` that is had quickly. Otherwise as `frameAt`.
    [[nodiscard]] Located frameNear(const CMTime& time, const std::stop_token& stop);
    /// The neighbours of a frame; null at the film's ends. Otherwise as `frameAt`.
    [[nodiscard]] SharedFrame frameAfter(const SharedFrame& frame, const std::stop_token& stop);
    [[nodiscard]] SharedFrame frameBefore(const SharedFrame& frame, const std::stop_token& stop);

    /// Where the film is watched now, and which way that moves.
    void setPosition(const SharedFrame& frame, Course course);
    /// Counts the frames that were decoded, and failures to.
    [[nodiscard]] std::int64_t progress() const;
    /// Waits until `progress` is not `since` any more, or until `deadline`.
    void waitForProgress(std::int64_t since, std::chrono::steady_clock::time_point deadline,
                         const std::stop_token& stop);
    /// True where nothing can be read after the frame though the film goes on.
    [[nodiscard]] bool hasFailedAfter(const SharedFrame& frame) const;

private:
    struct Want;
    struct Position {
        SharedFrame frame;
        Course course = Course::Resting;
        std::chrono::steady_clock::time_point since;
    };
    /// A fill that is not tried again until the film is watched elsewhere.
    struct FillTried {
        std::int64_t until = 0;
        std::int64_t position = 0;
        bool operator==(const FillTried&) const = default;
    };

    [[nodiscard]] Located ask(Want& want);
    void run(const std::stop_token& stop);
    void open(const std::stop_token& stop);
    void answer(Want& want);
    [[nodiscard]] Located locate(const Want& want);
    [[nodiscard]] bool prefetch(const std::stop_token& stop);
    [[nodiscard]] bool prefetchFor(const Position& position, const std::stop_token& interruption,
                                   const std::stop_token& stop);
    [[nodiscard]] bool isEnoughToPlay(const FrameCache::Stretch& stretch,
                                      std::int64_t position) const;
    [[nodiscard]] int framesWantedAhead(const FrameCache::Stretch& stretch, Course course) const;
    [[nodiscard]] bool fillBehind(const FrameCache::Stretch& stretch, std::int64_t position,
                                  const std::stop_token& interruption, const std::stop_token& stop);
    [[nodiscard]] bool canGoOnAfter(const FrameCache::Stretch& stretch) const;
    void noteFailure(std::int64_t position);
    void announce();
    [[nodiscard]] bool waitForWork(const std::stop_token& stop);

    std::shared_ptr<const MediaAsset> m_asset;
    std::shared_ptr<FrameCache> m_cache;

    mutable std::mutex m_mutex;
    std::condition_variable_any m_workChanged;
    std::condition_variable_any m_answered;
    Want* m_want = nullptr; // guarded by m_mutex, as the following
    Position m_position;
    bool m_hasNewPosition = false;
    std::stop_source m_interruption; ///< of prefetching's way to a place, when a request comes
    std::int64_t m_progress = 0;
    std::optional<std::int64_t> m_failedAfter; ///< reading stopped at the frame of this time

    // Of the thread alone:
    std::optional<FrameGatherer> m_gatherer;
    std::optional<MediaError> m_openingError;
    std::optional<FillTried> m_fillTried;
    std::jthread m_thread;
};

} // namespace stillwick
