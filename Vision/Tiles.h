// A picture cut into squares, worked on one by one so that memory stays small. Internal to Vision.
// Pure functions, any thread.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace stillwick {

/// Squares that cover a picture, row by row; smaller at its right and lower side.
[[nodiscard]] std::vector<cv::Rect> tilesOf(cv::Size picture);

/// A tile and what lies around it within the picture.
[[nodiscard]] cv::Rect withMargin(const cv::Rect& tile, int margin, cv::Size picture);

} // namespace stillwick
