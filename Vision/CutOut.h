// From a picture to its foreground around a search at reduced size: the frame that every way of
// finding subjects shares. Internal to Vision. Pure function, any thread.
#pragma once

#include "Vision/ForegroundSegmenter.h"
#include "Vision/RegionGraph.h"

#include <functional>
#include <stop_token>

namespace stillwick {

/// What a search is given.
struct SearchTask {
    /// *Shape*: RGBA, premultiplied, full size.
    cv::Mat4b pixels;
    /// The same at the size of the search.
    WorkingPicture working;
    std::stop_token stop;
};

/// Finds the subjects of a picture: 255 on them and 0 elsewhere, at the size of the search; all 0
/// where the picture shows none.
using SubjectSearch = std::function<cv::Mat1b(const SearchTask&)>;

/// *Errors*: VisionError Cancelled where it was asked to stop.
void stopIfAsked(const std::stop_token& stop);

/// The foreground of a picture by what a search finds in it: numbered, and with its edges at full
/// size. *Errors*: as `ForegroundSegmenter::segment`.
[[nodiscard]] Foreground cutOut(const QImage& picture, const SubjectSearch& search,
                                const std::stop_token& stop);

} // namespace stillwick
