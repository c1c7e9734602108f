// The bridge from bitmaps to matrices inside this folder. Any thread.
#pragma once

class QImage;
class QSize;
namespace cv {
class Mat;
template <typename>
class Size_;
} // namespace cv

namespace stillwick {

/// A matrix over the picture's own bytes: writing to one changes the other.
/// *Shape*: 8-bit formats of 1, 3 or 4 bytes to the pixel. *Lifetime*: the picture's.
[[nodiscard]] cv::Mat matrixView(QImage& image);
/// The same for reading: the matrix must not be written to.
[[nodiscard]] cv::Mat matrixView(const QImage& image);

[[nodiscard]] cv::Size_<int> matrixSize(const QSize& size);

} // namespace stillwick
