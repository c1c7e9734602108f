#include "Stillwick/ImageExportService.h"

#include "Desktop/AtomicFile.h"
#include "Desktop/DesktopError.h"
#include "Imaging/ImagingError.h"
#include "Imaging/PngEncoder.h"
#include "Stillwick/AppError.h"

namespace stillwick {

namespace {

void writeFile(const QString& path, const QByteArray& content) {
    try {
        writeFileAtomically(path, content);
    } catch (const DesktopError& error) {
        throw AppError::exportFailed(error.description());
    }
}

QByteArray encoded(const QImage& image) {
    try {
        return encodePng(image);
    } catch (const ImagingError& error) {
        throw AppError::exportFailed(error.description());
    }
}

} // namespace

void ImageExportService::writePNG(const QImage& image, const QString& path) const {
    writeFile(path, encoded(image));
}

void ImageExportService::writeText(const QString& text, const QString& path) const {
    writeFile(path, text.toUtf8());
}

} // namespace stillwick
