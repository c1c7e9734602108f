// One decoded picture of a film, in the decoder's own format. Immutable, shared, any thread.
#pragma once

#include "Media/Libav.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace stillwick {

/// What the track, not the frame, says of how its pictures are shown.
struct TrackDescription {
    int quarterTurns = 0;    ///< clockwise turns to make the stored picture upright, 0…3
    bool isMirrored = false; ///< flipped left to right before it is turned
    AVRational sampleAspectRatio{0, 1}; ///< of the container; 0 where it says nothing
    bool isGreyFullRange = true;        ///< greys without a declared range use all values
    double peakLuminance = 1000;        ///< of HDR pictures, in cd/m²
};

/// A decoded frame with its presentation time in the track's own time base.
class VideoFrame final {
public:
    VideoFrame(libav::Frame frame, const TrackDescription& track)
        : m_frame(std::move(frame)), m_track(track) {}

    [[nodiscard]] std::int64_t presentationTime() const noexcept { return m_frame->pts; }
    /// What the container says; 0 where it says nothing.
    [[nodiscard]] std::int64_t duration() const noexcept { return m_frame->pkt_duration; }
    [[nodiscard]] const AVFrame& avFrame() const noexcept { return *m_frame; }
    [[nodiscard]] const TrackDescription& track() const noexcept { return m_track; }
    /// Which of the packets sent since the decoder was last flushed it came from, from 0.
    [[nodiscard]] std::int64_t packetNumber() const noexcept { return m_frame->reordered_opaque; }
    /// False where the decoder had to invent part of it.
    [[nodiscard]] bool isIntact() const noexcept {
        return (m_frame->flags & AV_FRAME_FLAG_CORRUPT) == 0 && m_frame->decode_error_flags == 0;
    }

private:
    libav::Frame m_frame;
    TrackDescription m_track;
};

using SharedFrame = std::shared_ptr<const VideoFrame>;

} // namespace stillwick
