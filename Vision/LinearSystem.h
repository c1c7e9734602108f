// Solves the small dense systems of the foreground cues. Own arithmetic, because a library's solver
// may give other last bits with another number of threads. Internal to Vision. Pure function.
#pragma once

#include <opencv2/core.hpp>

namespace stillwick {

/// The x of `matrix * x = right`, for each column of `right`.
/// *Shape*: `matrix` symmetric and positive definite; `right` with as many rows.
/// *Source*: Cholesky decomposition.
[[nodiscard]] cv::Mat1f solvedSystem(const cv::Mat1f& matrix, const cv::Mat1f& right);

} // namespace stillwick
