// Puts colours where a subject is. Any thread.
#pragma once

#include <QImage>

namespace stillwick {

/// The colours of `color` under the opacity of `subject`.
/// *Shape*: both of any format and of one size; the result is Format_RGBA8888 (straight alpha) with
/// the subject's colour space, and all four bytes are zero where the subject's alpha is zero.
/// *Errors*: a null picture where the sizes differ, or there is no picture or no memory.
[[nodiscard]] QImage withAlphaOf(const QImage& color, const QImage& subject);

} // namespace stillwick
