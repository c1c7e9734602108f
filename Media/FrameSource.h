// Exact access to the decoded frames of a film. One thread at a time.
#pragma once

#include "Media/CMTime.h"
#include "Media/PacketQueue.h"
#include "Media/VideoDecoder.h"

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

    /// A frame's presentation time as a time of the film, exact in the track's time base.
    [[nodiscard]] CMTime filmTime(const VideoFrame& frame) const;
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
    };
    enum class Outcome { Found, MustBeginEarlier };

    [[nodiscard]] Target targetFor(const CMTime& time, const Tolerance& tolerance) const;
    [[nodiscard]] std::int64_t toTick(const CMTime& time, AVRounding rounding) const;
    void adoptTable();
    void findFirstPicture();
    [[nodiscard]] SharedFrame locate(const Target& target);
    [[nodiscard]] SharedFrame locateFromKey(const Target& target);
    [[nodiscard]] bool isNearEnough(const Target& target) const;
    [[nodiscard]] bool prepareToContinue(const Target& target);
    void begin(const PacketQueue::Entry& entry);
    [[nodiscard]] Outcome advanceTo(const Target& target);
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
    std::int64_t m_packetsDecoded = 0;
    Run m_run;
};

} // namespace stillwick
