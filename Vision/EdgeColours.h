// Takes the background out of the colours of a soft edge. Internal to Vision. Pure function, any
// thread.
#pragma once

#include "Vision/ForegroundSegmenter.h"

#include <opencv2/core.hpp>

#include <vector>

namespace stillwick {

/// The subject's own colour wherever `alpha` is neither 0 nor 255 and the picture is opaque: what
/// lies over the background's colour there as the picture shows it, and goes on from inside.
/// Works in tiles, on several threads with the same result.
/// *Shape*: `picture` RGBA, premultiplied. *Units*: `radius` in pixels, half the width of the edge.
/// *Source*: Forte, Approximate Fast Foreground Colour Estimation, ICIP 2021.
[[nodiscard]] std::vector<EdgeColour> edgeColours(const cv::Mat4b& picture, const cv::Mat1b& alpha,
                                                  int radius);

} // namespace stillwick
