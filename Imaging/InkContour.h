// The brush stroke around a subject. Any thread.
#pragma once

namespace cv {
class Mat;
}

namespace stillwick {

struct VisibleSubject;

/// How much ink lies on each pixel of a stroke drawn along the inner side of the silhouette.
/// *Shape*: 8 bits, one channel, of the subject's size; 255 is full ink.
/// *Units*: `widthPixels` of the drawing. *Errors*: cv::Exception where there is no memory.
[[nodiscard]] cv::Mat inkContour(const VisibleSubject& subject, double widthPixels);

} // namespace stillwick
