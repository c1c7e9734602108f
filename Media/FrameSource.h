// Exact access to the decoded frames of a film. One thread at a time.
#pragma once

#include "Media/PacketQueue.h"
#include "Media/Timeline.h"
#include "Media/VideoDecoder.h"

#include <functional>

namespace stillwick {

/// Finds the frame whose presentation interval [its time, the next frame's time) holds a time.
///
/// Decoding begins at the last key packet at or before the time, or goes on from the frame last
/// given where that is nearer. What comes out is checked: where the key packet turns out to need
/// something before it, decoding begins one key packet earlier.
class FrameSource final {
public:
    /// How far from the time asked for the frame may lie, where that saves decoding. The exact
    /// frame always satisfies it; an infinite tolerance after is met by it.
    struct Tolerance {
        CMTime before = CMTime::zero();
        CMTime after = CMTime::zero();
    };

    /// *Errors*: MediaError.
    FrameSource(const QString& path, const std::stop_token& stop);

    /// The frame shown at `time`, counted from the film's zero: of the file's own timeline where it
    /// has one, else the time of its first picture. Times from zero to a first picture that comes
    /// later have the first picture; the last frame's interval includes its end. *Errors*:
    /// MediaError TimeOutOfRange, Cancelled, ReadFailed, NoPicture.
    [[nodiscard]] SharedFrame frameAt(const CMTime& time, const Tolerance& tolerance,
                                      const std::stop_token& stop);

    /// What to do about a frame that came out damaged.
    enum class Damage {
        Retry, ///< decode it again from earlier key packets, as `frameAt` does
        Leave, ///< take it as it is
    };
    /// The frame that follows the one last given; null where that was the last. Every picture is
    /// decoded from here on. A frame must have been given, and no request have failed since.
    /// *Errors*: MediaError Cancelled, ReadFailed.
    [[nodiscard]] SharedFrame frameAfter(Damage damage, const std::stop_token& stop);

    /// True while what comes out may lean on something damaged or missing.
    [[nodiscard]] bool isDoubtful() const noexcept { return m_run.isDoubtful; }

    /// The time at which the last frame ends. *Errors*: as `frameAt`.
    [[nodiscard]] CMTime endTime(const std::stop_token& stop);
    /// The tick at which the frame last given ends, were it the last.
    [[nodiscard]] std::int64_t endTickOfGiven() const { return endOfLastFrame(); }

    /// Is told, on the thread of the request, of each two frames next to each other that are met
    /// on the way. At least `trail` frames before the one wanted are decoded for it.
    using PairHandler = std::function<void(const SharedFrame& frame, const SharedFrame& next)>;
    void setPairHandler(PairHandler handler, int trail);

    /// A frame's presentation time as a time of the film, exact in the track's time base.
    [[nodiscard]] CMTime filmTime(const VideoFrame& frame) const;
    [[nodiscard]] Timeline timeline() const noexcept;
    /// Counts how often all presentation times have changed: a film may turn out in its midst to
    /// have none of its own.
    [[nodiscard]] int timelineRevision() const noexcept { return m_timelineRevision; }
    [[nodiscard]] const PacketReader& reader() const noexcept { return m_reader; }
    /// What all requests so far have cost.
    [[nodiscard]] std::int64_t packetsDecoded() const noexcept { return m_packetsDecoded; }

private:
    /// A time asked for, in ticks of the track's time base.
    struct Target {
        std::int64_t tick = 0;       ///< the last tick not after it
        std::int64_t endTick = 0;    ///< the first tick not before it
        std::int64_t soonEnough = 0; ///< the first tick that the tolerance allows
        std::int64_t lateEnough = 0; ///< the last tick that the tolerance allows
    };
    /// What may be believed of the frames since decoding began.
    struct Run {
        PacketQueue::Entry entry;
        bool isUsable = false;    ///< a run is under way
        bool hasSentEnd = false;  ///< no packet is left to send
        bool isDrained = false;   ///< no frame is left to come
        bool hasTimes = false;    ///< a picture with a time came out
        bool isDoubtful = false;  ///< a frame came out damaged, or not as the packets said
        SharedFrame shown;        ///< the last frame not after the target
        SharedFrame next;         ///< the frame after it, where it is decoded already
        std::int64_t spacing = 0; ///< between the last two frames
        /// Before this, pictures were left out.
        std::int64_t completeFrom = std::numeric_limits<std::int64_t>::min();
    };
    enum class Outcome { Found, MustBeginEarlier };

    [[nodiscard]] Target targetFor(const CMTime& time, const Tolerance& tolerance) const;
    [[nodiscard]] static Target targetAt(std::int64_t tick);
    /// What `work` gives; where frames turn out to have no times, what `again` gives once they have
    /// the table's. After a failure no run is under way.
    template <typename Work, typename Again>
    [[nodiscard]] auto answer(const std::stop_token& stop, const Work& work, const Again& again);
    void adoptTable();
    void findFirstPicture();
    [[nodiscard]] SharedFrame locateInside(const Target& target);
    [[nodiscard]] SharedFrame locate(const Target& target);
    [[nodiscard]] SharedFrame locateFromKey(const Target& target);
    /// Before what the key packet of the next attempt must decode: before the last one's. Where
    /// several gave no picture the way to the target doubles from one to the next, for in a long
    /// stretch of damage each would decode nearly all that the one before it did.
    [[nodiscard]] std::int64_t keysBefore(const Target& target, int attempt) const;
    [[nodiscard]] bool isNearEnough(const Target& target) const;
    [[nodiscard]] bool prepareToContinue(const Target& target);
    void begin(const PacketQueue::Entry& entry);
    [[nodiscard]] Outcome advanceTo(const Target& target);
    [[nodiscard]] bool decodeAhead(std::int64_t tick);
    [[nodiscard]] bool isPair();
    void showNext();
    [[nodiscard]] SharedFrame following(Damage damage);
    [[nodiscard]] SharedFrame retryAfter(std::int64_t last);
    [[nodiscard]] bool isPictureMissingAfter(std::int64_t last) const;
    [[nodiscard]] std::int64_t locateEnd();
    [[nodiscard]] std::int64_t estimatedEndTick() const;
    [[nodiscard]] bool isSettled(const Target& target) const;
    [[nodiscard]] SharedFrame decodeNext(std::int64_t tick);
    [[nodiscard]] bool isAcceptable(const VideoFrame& frame);
    void sendNext(std::int64_t tick);
    void throwIfPastEnd(const Target& target) const;
    [[nodiscard]] std::int64_t endOfLastFrame() const;

    PacketReader m_reader;
    PacketQueue m_queue;
    VideoDecoder m_decoder;
    bool m_mayLeaveOut = false; ///< pictures that none depends on may be skipped on the way
    bool m_hasTimes = false;    ///< a picture with a time was met
    std::int64_t m_zero = 0;
    int m_timelineRevision = 0;
    std::int64_t m_packetsDecoded = 0;
    PairHandler m_pairHandler;
    int m_trail = 0;
    Run m_run;
};

} // namespace stillwick
