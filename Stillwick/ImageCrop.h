// Trims pictures to what is visible in them. Pure functions, any thread.
#pragma once

#include <QImage>

namespace stillwick::ImageCrop {

/// The part of `image` inside the bounding box of its pixels whose alpha, of 255, is above
/// `threshold`. Never fails: an empty image, one without such a pixel and one that cannot be read
/// or cut come back unchanged. *Shape*: any; the result has the image's own format and colour
/// space.
[[nodiscard]] QImage trimmedToContent(const QImage& image, quint8 threshold = 8);

} // namespace stillwick::ImageCrop
