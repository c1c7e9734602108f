// The pixels of a PNG file. Any thread; two calls share nothing.
#pragma once

#include <QByteArray>
#include <QImage>

namespace stillwick {

/// The picture's rows, filtered and compressed: what a PNG file's IDAT chunks hold together.
/// *Shape*: Format_RGBA8888, not empty.
/// *Errors*: std::bad_alloc.
/// *Source*: ISO/IEC 15948 (PNG, second edition), clauses 9 on filters, 10 on compression and 12.8
/// on choosing the filter that leaves the least sum of absolute differences.
[[nodiscard]] QByteArray compressedPixels(const QImage& image);

} // namespace stillwick
