// The one place where an export reaches the disk. Any thread.
#pragma once

#include <QImage>
#include <QString>

namespace stillwick {

/// Writes finished pictures and texts, each whole or not at all.
class ImageExportService final {
public:
    /// Writes the picture as a PNG file with transparency, replacing a file of that name.
    /// *Shape*: the picture's full size in pixels, 8-bit RGBA, in the picture's own colour space,
    /// or in sRGB if it has none.
    /// *Errors*: AppError `exportFailed`; a file of that name is as it was. Folders are not made.
    void writePNG(const QImage& image, const QString& path) const;

    /// Writes the text in UTF-8 without a byte-order mark, replacing a file of that name.
    /// *Errors*: as `writePNG`.
    void writeText(const QString& text, const QString& path) const;
};

} // namespace stillwick
