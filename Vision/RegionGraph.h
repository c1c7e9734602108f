// What the foreground cues know of a picture's regions: colour, place, neighbours. Internal to
// Vision. Plain values and pure functions, any thread.
#pragma once

#include "Vision/Superpixels.h"

#include <opencv2/core.hpp>

#include <vector>

namespace stillwick {

/// A picture at working size.
struct WorkingPicture {
    /// *Shape*: CIE Lab, L 0 to 100; grey where nothing is visible.
    cv::Mat3f lab;
    /// 255 where the picture itself is visible, 0 where it is transparent.
    cv::Mat1b visible;
};

/// One superpixel.
struct Region {
    cv::Vec3f colour;
    /// Mean strength of the lightness gradient.
    float texture = 0;
    /// The strongest lightness gradient.
    float sharpness = 0;
    /// *Units*: the longer side of the picture is 1, the picture's middle is the origin.
    cv::Point2f centre;
    /// Part of the picture's area.
    float share = 0;
    /// Pixels that lie on the picture's frame or are transparent.
    float framePixels = 0;
    /// Those of them on the lower side, where subjects are often cut off.
    float lowerFramePixels = 0;
    std::vector<int> neighbours;

    /// True where the region is taken for background to begin with.
    [[nodiscard]] bool touchesFrame() const { return framePixels > 0; }
};

/// The regions of a picture with their colour distances.
struct RegionGraph {
    Superpixels superpixels;
    std::vector<Region> regions;
    /// Distance in Lab between the mean colours of each two regions.
    cv::Mat1f colourDistance;
    /// Sums over the regions.
    float framePixels = 0;
    float lowerFramePixels = 0;

    [[nodiscard]] int count() const { return static_cast<int>(regions.size()); }
};

/// The graph of about `wanted` regions of a picture.
[[nodiscard]] RegionGraph regionGraphOf(const WorkingPicture& picture, int wanted);

/// Length of the shortest path between each two regions, where a step to a neighbour (or from frame
/// to frame) costs its colour distance less `tolerance`, at least 0.
[[nodiscard]] cv::Mat1f geodesicDistances(const RegionGraph& graph, float tolerance);

} // namespace stillwick
