// Bitmaps whose colours do not depend on their opacity. Any thread.
#pragma once

#include <QImage>

namespace stillwick {

/// The picture with straight alpha: the form in which opacity can change and no colour with it.
/// *Shape*: Format_RGBA8888, the picture's size and colour space. A premultiplied colour becomes
/// the nearest to `premultiplied * 255 / alpha`, and 0 where alpha is 0; other colours stay as they
/// are. *Errors*: a null picture where there is no memory, or none was given.
[[nodiscard]] QImage withStraightAlpha(const QImage& image);

} // namespace stillwick
