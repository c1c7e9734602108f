// A clip as one linear decode tells it. Immutable once made, any thread.
#pragma once

#include "Media/CMTime.h"
#include "Media/Libav.h"

#include <array>
#include <cstdint>
#include <vector>

class QString;

namespace stillwick::benchmarks {

/// A hash of a picture's visible samples, without padding.
using PictureHash = std::array<std::uint8_t, 16>;

/// The planes of a picture with 4:2:0 chroma and 8 bits, as all of the clips have.
struct PlanesView {
    const std::uint8_t* const* data = nullptr;
    const int* stride = nullptr;
    int width = 0;
    int height = 0;
};
[[nodiscard]] PictureHash hashOf(const PlanesView& planes);
[[nodiscard]] PictureHash hashOf(const AVFrame& frame);

/// A time to grab, and the frame shown then.
struct Moment {
    CMTime time;
    std::size_t frame = 0; ///< its number in presentation order
};

/// The first video track of a clip: its packets, and the time and hash of each of its pictures as
/// decoded from the first packet to the last by libavcodec on one thread.
class Clip final {
public:
    struct Picture {
        std::int64_t time = 0; ///< in the track's time base
        PictureHash hash{};
    };

    /// Without hashes, nothing is decoded: times are those of the packets.
    enum class Hashes { Made, LeftOut };

    /// *Errors*: std::runtime_error.
    explicit Clip(const QString& path, Hashes hashes = Hashes::Made);

    [[nodiscard]] const AVStream& stream() const noexcept { return *m_stream; }
    /// In decode order.
    [[nodiscard]] const std::vector<libav::Packet>& packets() const noexcept { return m_packets; }
    /// In presentation order.
    [[nodiscard]] const std::vector<Picture>& pictures() const noexcept { return m_pictures; }
    /// A time within the interval of `frame`: `fraction` of the way to the next frame.
    [[nodiscard]] Moment momentIn(std::size_t frame, double fraction) const;

private:
    void readPackets();
    void decodePictures();
    void listPictures();

    libav::FormatContext m_format;
    AVStream* m_stream = nullptr;
    std::vector<libav::Packet> m_packets;
    std::vector<Picture> m_pictures;
};

/// libavcodec's decoder for a track, open. *Errors*: std::runtime_error.
[[nodiscard]] libav::CodecContext openDecoder(const AVStream& stream, int threads);

} // namespace stillwick::benchmarks
