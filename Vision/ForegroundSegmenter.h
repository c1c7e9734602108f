// The one place behind which the way of finding subjects hides: a method takes the place of another
// by implementing this. Immutable objects, any thread.
#pragma once

#include <QImage>
#include <QPoint>

#include <array>
#include <memory>
#include <stop_token>
#include <vector>

namespace stillwick {

/// What a pixel of a soft edge looks like without the background that shines through.
struct EdgeColour {
    QPoint place;
    /// *Shape*: red, green, blue.
    std::array<uchar, 3> colour{};
};

/// What of a picture is subject.
struct Foreground {
    /// *Shape*: Format_Grayscale8 of the picture's size; 255 where the picture stays as it is, 0 on
    /// the background and where the picture is transparent.
    QImage alpha;
    /// *Shape*: Format_Grayscale8 of the picture's size; 1 to `instanceCount` wherever `alpha` is
    /// above 0, 0 elsewhere. Each instance has at least one pixel.
    QImage labels;
    int instanceCount = 0;
    /// Of pixels whose `alpha` is neither 0 nor 255, each at most once; the others have the
    /// picture's colours.
    std::vector<EdgeColour> edgeColours = {};
};

/// A way of finding the subjects of a picture.
class ForegroundSegmenter {
public:
    /// Instances beyond these are left out, smallest first.
    static constexpr int mostInstances = 32;

    ForegroundSegmenter() = default;
    virtual ~ForegroundSegmenter() = default;
    Q_DISABLE_COPY_MOVE(ForegroundSegmenter)

    /// The subjects of a picture, numbered from left to right by the middle of their pixels; no
    /// instance where it shows none. The same picture always gives the same answer, to the bit.
    /// *Shape*: Format_RGBA8888_Premultiplied, not empty.
    /// *Errors*: VisionError (SegmentationFailed, OutOfMemory; Cancelled soon after `stop`).
    /// *Thread*: any, several at a time.
    [[nodiscard]] virtual Foreground segment(const QImage& picture, std::stop_token stop) const = 0;
};

/// The method that requests use unless told otherwise; null where the program's own weights are
/// damaged.
[[nodiscard]] std::shared_ptr<const ForegroundSegmenter> standardSegmenter();

} // namespace stillwick
