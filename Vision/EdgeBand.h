// Carries a coarse mask to full resolution: soft and along the picture's own edges in a narrow
// band, hard everywhere else. Internal to Vision. Pure function, any thread.
#pragma once

#include <opencv2/core.hpp>

namespace stillwick {

/// The opacity of each pixel of `picture` by a mask of smaller or the same size. Works in tiles, so
/// that its memory does not grow with the band, and on several threads with the same result.
/// *Shape*: `picture` RGBA, premultiplied; `mask` 0 or 255.
/// *Source*: He et al., Guided Image Filtering, PAMI 2013.
[[nodiscard]] cv::Mat1b edgeRefined(const cv::Mat4b& picture, const cv::Mat1b& mask);

/// About half the width, in pixels of the picture, within which the edge of such a mask is soft.
[[nodiscard]] int edgeRadius(cv::Size picture, cv::Size mask);

} // namespace stillwick
