// Which colours are the subject's and which the background's. Internal to Vision. Pure function.
#pragma once

#include "Vision/RegionGraph.h"

namespace stillwick {

/// For each pixel the log of how much more frequent its colour is in the subject than in the
/// background, learnt from how much each pixel is believed to be subject.
/// *Shape*: `belief` of the picture's size, 0 to 1.
[[nodiscard]] cv::Mat1f colourOdds(const WorkingPicture& picture, const cv::Mat1f& belief);

} // namespace stillwick
