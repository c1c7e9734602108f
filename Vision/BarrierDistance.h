// How high a barrier a path from the frame has to cross to reach each pixel: low for what is joined
// with the background. Internal to Vision. Pure function, any thread.
#pragma once

#include "Vision/RegionGraph.h"

namespace stillwick {

/// Which sides of the frame are taken for background.
enum class FrameSides { All, AllButLower };

/// The minimum barrier distance of each pixel from the frame and the transparent pixels, summed
/// over the channels; `sides` says whether the lower side counts as frame. *Source*: Zhang et al.,
/// Minimum Barrier Salient Object Detection at 80 FPS, ICCV 2015.
[[nodiscard]] cv::Mat1f barrierDistance(const WorkingPicture& picture, FrameSides sides);

} // namespace stillwick
