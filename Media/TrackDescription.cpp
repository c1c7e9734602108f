#include "Media/TrackDescription.h"

#include <QImage>
#include <QTransform>

#include <array>
#include <cmath>
#include <cstring>

namespace stillwick {

namespace {

using Matrix = std::array<std::int32_t, 9>;

/// The quarter turns, clockwise, of a matrix without a mirror; turns of other angles count as none.
int quarterTurnsOf(double a, double b) {
    const double degrees = std::atan2(b, a) * 180.0 / M_PI;
    const double quarters = degrees / 90.0;
    const double nearest = std::round(quarters);
    constexpr double tolerance = 0.02; // matrices are 16.16 fixed point
    if (std::abs(quarters - nearest) > tolerance)
        return 0;
    return (int(nearest) + 4) % 4;
}

void readDisplayMatrix(const AVStream& stream, TrackDescription& track) {
    std::size_t size = 0;
    const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!data || size < sizeof(Matrix))
        return;
    Matrix matrix{};
    std::memcpy(matrix.data(), data, sizeof matrix);
    // A stored point (x, y), y down, is shown at (a x + c y, b x + d y).
    const double a = matrix[0];
    const double b = matrix[1];
    const double c = matrix[3];
    const double d = matrix[4];
    track.isMirrored = a * d - b * c < 0;
    // With the mirror x -> -x taken out first, what is left is a turn.
    track.quarterTurns = track.isMirrored ? quarterTurnsOf(-a, -b) : quarterTurnsOf(a, b);
}

/// The brightest light of HDR pictures: of the container alone, since what frames say of it gets
/// lost where decoding does not begin at the first.
void readPeakLuminance(const AVStream& stream, TrackDescription& track) {
    constexpr double least = 203; // the luminance of diffuse white
    std::size_t size = 0;
    const std::uint8_t* data =
        av_stream_get_side_data(&stream, AV_PKT_DATA_CONTENT_LIGHT_LEVEL, &size);
    if (data && size >= sizeof(AVContentLightMetadata)) {
        AVContentLightMetadata light{};
        std::memcpy(&light, data, sizeof light);
        if (light.MaxCLL > least)
            track.peakLuminance = light.MaxCLL;
    }
}

} // namespace

TrackDescription describeTrack(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    TrackDescription track;
    track.sampleAspectRatio = stream.sample_aspect_ratio.num > 0 ? stream.sample_aspect_ratio
                                                                 : parameters.sample_aspect_ratio;
    const AVCodecID codec = parameters.codec_id;
    track.isGreyFullRange = codec != AV_CODEC_ID_H264 && codec != AV_CODEC_ID_HEVC &&
                            codec != AV_CODEC_ID_AV1 && codec != AV_CODEC_ID_VP9 &&
                            codec != AV_CODEC_ID_PRORES;
    readDisplayMatrix(stream, track);
    readPeakLuminance(stream, track);
    return track;
}

QImage oriented(QImage picture, const TrackDescription& track) {
    if (track.isMirrored)
        picture = picture.mirrored(true, false);
    if (track.quarterTurns != 0)
        picture = picture.transformed(QTransform().rotate(90.0 * track.quarterTurns));
    return picture;
}

AVRational sampleAspectRatio(const VideoFrame& frame) {
    constexpr AVRational square{1, 1};
    AVRational ratio = frame.avFrame().sample_aspect_ratio;
    if (ratio.num <= 0 || ratio.den <= 0)
        ratio = frame.track().sampleAspectRatio;
    if (ratio.num <= 0 || ratio.den <= 0)
        return square;
    const double value = av_q2d(ratio);
    // Ratios such as 1280:1281 come from rounding somewhere; past 10:1 they come from damage.
    constexpr double invisible = 0.01;
    constexpr double absurd = 10.0;
    if (std::abs(value - 1.0) < invisible || value > absurd || value < 1.0 / absurd)
        return square;
    return ratio;
}

} // namespace stillwick
