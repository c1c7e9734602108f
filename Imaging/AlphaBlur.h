// Softening planes of opacity. Any thread.
#pragma once

#include <QImage>

namespace stillwick {

/// The plane blurred by a Gaussian; its border values stand for what lies outside it.
/// *Shape*: Format_Alpha8 in and out, of the same size.
/// *Units*: the standard deviation in pixels, above 0.
/// *Errors*: std::bad_alloc.
[[nodiscard]] QImage gaussianBlurred(const QImage& plane, double sigmaPixels);

/// How far from a pixel others have an effect on it in `gaussianBlurred`, in whole pixels.
[[nodiscard]] int gaussianReach(double sigmaPixels);

} // namespace stillwick
