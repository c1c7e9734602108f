// Pictures as matrices and back, the same for every way of finding subjects. Internal to Vision.
// Pure functions, any thread.
#pragma once

#include "Vision/RegionGraph.h"

#include <QImage>
#include <opencv2/core.hpp>

namespace stillwick {

/// The picture's own bytes, borrowed: nobody may write to them.
/// *Shape*: RGBA, premultiplied. *Lifetime*: the picture's.
[[nodiscard]] cv::Mat4b pixelsOf(const QImage& picture);

/// The picture with its longer side at most `side`, at least one pixel each way; the picture itself
/// where it is small enough.
[[nodiscard]] cv::Mat4b reducedTo(const cv::Mat4b& pixels, int side);

/// The colours from 0 to 1, mid-grey where nothing is visible.
/// *Shape*: red, green, blue.
[[nodiscard]] cv::Mat3f coloursOf(const cv::Mat4b& pixels);

/// The picture as cues and cuts want it.
[[nodiscard]] WorkingPicture workingPicture(const cv::Mat4b& pixels);

/// A Format_Grayscale8 copy. *Errors*: VisionError OutOfMemory.
[[nodiscard]] QImage greyImage(const cv::Mat1b& values);

} // namespace stillwick
