// A decoder kept for the life of a film: some streams tell only in their first packet what the
// others need. One thread at a time.
#pragma once

#include "Media/VideoFrame.h"

namespace stillwick {

/// With how many threads pictures are decoded: two more than there are cores, for threads wait for
/// each other's pictures, but six at most, for each adds a frame of memory and of latency.
[[nodiscard]] int decoderThreadCount();

/// Decodes the packets of one track into frames in presentation order.
class VideoDecoder final {
public:
    enum class Effort {
        EveryPicture,
        ReferencesOnly, ///< pictures on which no other depends may be left out
    };

    /// *Errors*: MediaError Unsupported, OutOfMemory.
    explicit VideoDecoder(const AVStream& stream);

    /// Takes a packet, or the end of the stream where `packet` is null. Damaged packets are passed
    /// over. `receive` must have been called until it gave none.
    void send(const AVPacket* packet, Effort effort);
    /// The next frame in presentation order; null when more packets are needed, or none will come.
    [[nodiscard]] SharedFrame receive();
    /// Forgets all packets and frames, so that the next packet may come from anywhere. Packets are
    /// counted anew.
    void flush();

private:
    libav::CodecContext m_context;
    TrackDescription m_track;
    std::int64_t m_packetsSent = 0;
};

} // namespace stillwick
