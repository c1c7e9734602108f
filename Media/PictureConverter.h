// From a decoded frame to the picture that people see. One thread at a time.
#pragma once

#include "Media/PicturePool.h"
#include "Media/PlaneConversion.h"
#include "Media/Yuv420Conversion.h"

#include <QImage>

#include <optional>

namespace stillwick {

/// The one conversion from frames to bitmaps: whatever is shown, captured or exported went through
/// it.
class PictureConverter final {
public:
    enum class Orientation { Upright, AsStored };

    /// The frame as a person sees it: deinterlaced where it is interlaced, with square pixels
    /// (made wider or higher, never narrower or lower), HDR brought to sRGB.
    /// *Shape*: RGBA, 8 bits, premultiplied alpha, opaque where the film has none; colour space
    /// sRGB. *Errors*: MediaError Unsupported, TooLarge, OutOfMemory.
    [[nodiscard]] QImage convert(const VideoFrame& frame,
                                 Orientation orientation = Orientation::Upright);

private:
    struct Step {
        PlaneFormat from;
        PlaneFormat to;
        std::optional<PlaneConversion> conversion;
    };

    struct QuickStep {
        PlaneFormat from;
        std::optional<Yuv420Conversion> conversion;
    };

    [[nodiscard]] QImage toBitmap(const VideoFrame& frame);
    [[nodiscard]] QImage convertedQuickly(const PlaneFormat& from, const PlanarPicture& source,
                                          const QSize& size);
    [[nodiscard]] QImage convertedByRows(const PlaneFormat& from, const PlanarPicture& source,
                                         const QSize& size);
    static void prepare(Step& step, const PlaneFormat& from, const PlaneFormat& to);
    static void run(Step& step, const PlaneFormat& from, const PlaneFormat& to,
                    const PlanarPicture& source, const PlanarPicture& target);
    [[nodiscard]] PlanarPicture toRgb(const VideoFrame& frame, const AVFrame& planar,
                                      PlaneFormat format, const PlanarPicture& source);
    void convertRows(const PlaneFormat& from, const PlanarPicture& source, const PlanarPicture& rgb,
                     double peakLuminance);
    [[nodiscard]] PlanarPicture stretched(PlanarPicture rgb, AVRational sampleAspectRatio);

    [[nodiscard]] PlanarPicture scratch(const PlanarPicture::Layout& layout);

    PicturePool m_pool;
    std::optional<PlanarPicture> m_scratch;
    QuickStep m_quick;
    Step m_toRgb;
    Step m_stretch;
};

} // namespace stillwick
