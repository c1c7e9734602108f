// Decoded frames of one film around the place where it is watched. Any thread.
#pragma once

#include "Media/Timeline.h"
#include "Media/VideoFrame.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>

namespace stillwick {

/// Keeps frames together with what is known of their order, within a bound that all caches of the
/// process share.
///
/// A frame's successor is stated by whoever decoded the two; only where it is known does the cache
/// answer for the time between them. What is farthest from the position is dropped first.
class FrameCache final {
public:
    enum class Course { Resting, Forward, Backward };

    /// What is known without a gap around a frame.
    struct Stretch {
        std::int64_t first = 0; ///< the time of its first frame
        std::int64_t last = 0;
        int framesAhead = 0; ///< not counting the frame itself
        std::size_t bytesAhead = 0;
        std::size_t bytesBehind = 0;
        bool reachesStart = false; ///< its first frame is the film's
        bool reachesEnd = false;
    };

    FrameCache();
    ~FrameCache();
    FrameCache(const FrameCache&) = delete;
    FrameCache& operator=(const FrameCache&) = delete;

    /// Empties the cache for a film's timeline, and claims a share of the memory.
    void begin(const Timeline& timeline);
    /// Empties the cache and gives its share back.
    void end();
    void insert(const SharedFrame& frame);
    /// Takes both, and that none lies between them.
    void insertPair(const SharedFrame& frame, const SharedFrame& next);
    void setNext(std::int64_t time, std::int64_t nextTime);
    void setFirst(std::int64_t time);
    void setLast(std::int64_t time, std::int64_t endTick);
    /// Where the film is watched, and which way that moves. The frame there is not dropped.
    void setPosition(std::int64_t time, Course course);

    /// The frame on screen and the time that it is shown for: whoever asks for that time gets it.
    void setShown(const SharedFrame& frame, const CMTime& time);

    [[nodiscard]] Timeline timeline() const;
    /// The frame whose interval holds `time`, where the cache is certain of it; else null.
    [[nodiscard]] SharedFrame frameAt(const CMTime& time) const;
    /// The neighbours of the frame at `time`, where they are known and held; else null.
    [[nodiscard]] SharedFrame after(std::int64_t time) const;
    [[nodiscard]] SharedFrame before(std::int64_t time) const;
    [[nodiscard]] bool isFirst(std::int64_t time) const;
    [[nodiscard]] bool isLast(std::int64_t time) const;
    /// The tick at which the film ends, once its last frame was met.
    [[nodiscard]] std::optional<std::int64_t> endTick() const;
    /// None where no frame of that time is held.
    [[nodiscard]] std::optional<Stretch> stretchAround(std::int64_t time) const;
    /// *Units*: bytes.
    [[nodiscard]] std::size_t size() const;

    /// What all caches may hold together: 1 GiB, or a quarter of the machine's memory if that is
    /// less. *Units*: bytes.
    [[nodiscard]] static std::size_t bound();
    /// What each may hold now.
    [[nodiscard]] static std::size_t share();

private:
    friend class FrameCacheShares;

    struct Entry {
        SharedFrame frame;
        std::size_t bytes = 0;
        std::optional<std::int64_t> next; ///< the time of the frame that follows
    };
    using Entries = std::map<std::int64_t, Entry>;

    void insertUnlocked(const SharedFrame& frame);
    void trim(std::size_t limit);
    void trimUnlocked(std::size_t limit);
    [[nodiscard]] std::int64_t distanceOf(std::int64_t time) const;
    [[nodiscard]] Entries::const_iterator entryBefore(Entries::const_iterator entry) const;
    [[nodiscard]] Entries::const_iterator entryAfter(Entries::const_iterator entry) const;

    mutable std::mutex m_mutex; // guards all below
    Timeline m_timeline;
    Entries m_entries;
    std::size_t m_bytes = 0;
    SharedFrame m_shown;
    CMTime m_shownTime;
    std::int64_t m_position = 0;
    Course m_course = Course::Resting;
    std::optional<std::int64_t> m_first;
    std::optional<std::int64_t> m_last;
    std::int64_t m_endTick = 0;
};

} // namespace stillwick
