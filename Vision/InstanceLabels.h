// Tells the subjects of a foreground mask from each other. Internal to Vision. Pure functions, any
// thread.
#pragma once

#include <opencv2/core.hpp>

namespace stillwick {

/// Subjects with their numbers.
struct InstanceLabels {
    /// 0 on the background, 1 to count elsewhere.
    cv::Mat1b labels;
    int count = 0;
};

/// The mask without its specks and pin-holes. A speck is a piece (8-connected) below 0.2 % of the
/// picture or below 5 % of the largest piece; a pin-hole is an enclosed gap below 0.1 % of it.
[[nodiscard]] cv::Mat1b withoutSpecks(const cv::Mat1b& mask);

/// Numbers the pieces of a mask from left to right by the middle of their pixels. Pieces that hang
/// together by a waist are parted there: where the distance from the edge, foreshortened upwards,
/// falls by a tenth of the piece's greatest between two of its peaks. At most `most`, the largest.
[[nodiscard]] InstanceLabels instancesOf(const cv::Mat1b& mask, int most);

/// The labels at another size: each pixel the label that weighs most among the four nearest, and
/// background pixels the label of the nearest instance.
[[nodiscard]] cv::Mat1b spreadLabels(const InstanceLabels& instances, cv::Size size);

} // namespace stillwick
