// The foreground instances that were found in one picture. Immutable value, any thread.
#pragma once

#include "Vision/ForegroundSegmenter.h"

#include <QImage>
#include <QRect>

#include <span>
#include <vector>

namespace stillwick {

class ImageRequestHandler;

/// What part of the picture a masked image shows.
enum class MaskedImageExtent {
    WholePicture,
    CroppedToInstances, ///< the smallest rectangle that holds every pixel of the instances
};

/// The masks of a picture's subjects. Each pixel belongs to one instance at most, so the masked
/// image of all instances is the sum of those of each.
class InstanceMaskObservation final {
public:
    explicit InstanceMaskObservation(Foreground foreground);

    /// The indices of the instances, ascending from 1, from left to right in the picture.
    [[nodiscard]] const std::vector<int>& allInstances() const noexcept { return m_instances; }

    /// The handler's picture with every pixel outside `instances` transparent. Pixels well inside
    /// are the picture's own, to the bit; where the edge is soft they fade and have the colour of
    /// the subject alone.
    /// *Shape*: Format_RGBA8888 (straight alpha, all zeros where it is 0), the picture's colour
    /// space. *Errors*: VisionError: UnknownInstance where `instances` is empty or names one that
    /// `allInstances` does not hold; OtherPicture where the handler's picture has another size;
    /// OutOfMemory.
    [[nodiscard]] QImage generateMaskedImage(std::span<const int> instances,
                                             const ImageRequestHandler& handler,
                                             MaskedImageExtent extent) const;

private:
    [[nodiscard]] QRect extentOf(std::span<const bool> chosen) const;
    void colourEdge(const QRect& area, QImage& image) const;

    Foreground m_foreground;
    std::vector<int> m_instances;
};

} // namespace stillwick
