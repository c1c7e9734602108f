// The first estimate of what belongs to a subject: all cues weighed together. Internal to Vision.
// Pure function, any thread.
#pragma once

#include "Vision/RegionGraph.h"

#include <array>

namespace stillwick {

/// The log odds of each pixel to belong to a subject: positive is more likely than not. The mean of
/// estimates on regions of several sizes.
[[nodiscard]] cv::Mat1f foregroundOdds(const WorkingPicture& picture);

/// The numbers of regions whose odds `foregroundOdds` takes the mean of.
inline constexpr std::array regionCounts{300, 150};

/// The log odds on about so many regions.
[[nodiscard]] cv::Mat1f foregroundOdds(const WorkingPicture& picture, int regions);

} // namespace stillwick
