// Superpixels: a picture cut into small, compact regions of one colour, on which the foreground
// cues are computed. Internal to Vision. Pure function, any thread.
#pragma once

#include <opencv2/core.hpp>

namespace stillwick {

/// A partition of a picture into connected regions.
struct Superpixels {
    /// Region of each pixel, 0 to count - 1.
    cv::Mat1i labels;
    int count = 0;
};

/// Cuts a picture into about `wanted` regions, each of them 4-connected. Single-threaded, so the
/// same picture always gives the same regions.
/// *Shape*: CIE Lab, L 0 to 100, not empty.
/// *Source*: Achanta et al., SLIC Superpixels, PAMI 2012.
[[nodiscard]] Superpixels superpixelsOf(const cv::Mat3f& lab, int wanted);

} // namespace stillwick
