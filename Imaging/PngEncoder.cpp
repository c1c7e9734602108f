#include "Imaging/PngEncoder.h"

#include "Imaging/ImagingError.h"
#include "Imaging/PngPixels.h"
#include "Imaging/StraightAlpha.h"

#include <QColorSpace>

#include <algorithm>
#include <csetjmp>
#include <new>
#include <utility>

#include <png.h>

namespace stillwick {

namespace {

using Category = ImagingError::Category;

/// How much of the pixels goes into one chunk.
constexpr qsizetype chunkBytes = qsizetype(1) << 20;

/// One encoding. libpng reports an error by a jump out of its own functions: so the jump lands in
/// `run`, which holds nothing that would have to be destroyed; all that lives longer is a field.
class PngWriter {
public:
    explicit PngWriter(const QImage& image)
        : m_image(withStraightAlpha(image)), m_isSrgb(isSrgb(image.colorSpace())) {
        if (m_image.isNull())
            throw ImagingError(Category::OutOfMemory);
        if (!m_isSrgb)
            m_profile = image.colorSpace().iccProfile();
        m_pixels = compressedPixels(m_image);
        m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, &PngWriter::onError,
                                        &PngWriter::onWarning);
        m_info = m_png ? png_create_info_struct(m_png) : nullptr;
    }
    ~PngWriter() { png_destroy_write_struct(&m_png, &m_info); }
    Q_DISABLE_COPY_MOVE(PngWriter)

    QByteArray encode() {
        if (!m_info || m_isOutOfMemory)
            throw ImagingError(Category::OutOfMemory, m_libraryText);
        const bool succeeded = run();
        if (m_isOutOfMemory)
            throw ImagingError(Category::OutOfMemory, m_libraryText);
        if (!m_isSrgb && !m_hasProfile)
            throw ImagingError(Category::UnfitColorProfile, m_libraryText);
        if (!succeeded)
            throw ImagingError(Category::EncodingFailed, m_libraryText);
        return std::move(m_output);
    }

private:
    static bool isSrgb(const QColorSpace& space) {
        return !space.isValid() || space == QColorSpace(QColorSpace::SRgb);
    }

    // The jump crosses frames of libpng and of this class only.
    bool run() {
        if (setjmp(png_jmpbuf(m_png)) != 0) // NOLINT(cert-err52-cpp)
            return false;
        png_set_write_fn(m_png, this, &PngWriter::onBytes, &PngWriter::onFlush);
        writeHeader();
        if (m_isSrgb || m_hasProfile)
            writePixels();
        return true;
    }

    void writeHeader() {
        png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(m_image.width()),
                     static_cast<png_uint_32>(m_image.height()), 8, PNG_COLOR_TYPE_RGB_ALPHA,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (m_isSrgb) {
            png_set_sRGB_gAMA_and_cHRM(m_png, m_info, PNG_sRGB_INTENT_PERCEPTUAL);
        } else {
            png_set_iCCP(m_png, m_info, "ICC", PNG_COMPRESSION_TYPE_BASE,
                         reinterpret_cast<png_const_bytep>(m_profile.constData()),
                         static_cast<png_uint_32>(m_profile.size()));
            // A profile that libpng takes for unfit is left out with nothing but a warning.
            m_hasProfile = png_get_valid(m_png, m_info, PNG_INFO_iCCP) != 0;
        }
    }

    // libpng's own compression is zlib's; ours takes a third of the time.
    void writePixels() {
        png_write_info(m_png, m_info);
        for (qsizetype at = 0; at < m_pixels.size(); at += chunkBytes)
            writeChunk("IDAT", m_pixels.constData() + at,
                       std::min(chunkBytes, m_pixels.size() - at));
        writeChunk("IEND", nullptr, 0);
    }

    void writeChunk(const char* name, const char* bytes, qsizetype count) {
        png_write_chunk(m_png, reinterpret_cast<png_const_bytep>(name),
                        reinterpret_cast<png_const_bytep>(bytes), std::size_t(count));
    }

    // No exception may cross libpng's frames.
    static void onBytes(png_structp png, png_bytep bytes, png_size_t count) {
        auto* self = static_cast<PngWriter*>(png_get_io_ptr(png));
        try {
            self->m_output.append(reinterpret_cast<const char*>(bytes),
                                  static_cast<qsizetype>(count));
            return;
        } catch (const std::bad_alloc&) {
            self->m_isOutOfMemory = true;
        }
        png_error(png, "no memory for the file");
    }

    static void onFlush(png_structp /*png*/) {}

    [[noreturn]] static void onError(png_structp png, png_const_charp text) {
        onWarning(png, text);
        png_longjmp(png, 1);
    }

    static void onWarning(png_structp png, png_const_charp text) {
        auto* self = static_cast<PngWriter*>(png_get_error_ptr(png));
        try {
            self->m_libraryText = QString::fromUtf8(text);
        } catch (const std::bad_alloc&) {
            self->m_isOutOfMemory = true;
        }
    }

    QImage m_image;
    QByteArray m_profile;
    QByteArray m_pixels; ///< compressed
    QByteArray m_output;
    QString m_libraryText;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    bool m_isSrgb;
    bool m_hasProfile = false;
    bool m_isOutOfMemory = false;
};

} // namespace

QByteArray encodePng(const QImage& image) {
    if (image.isNull())
        throw ImagingError(Category::EmptyPicture);
    try {
        return PngWriter(image).encode();
    } catch (const std::bad_alloc&) {
        throw ImagingError(Category::OutOfMemory);
    }
}

} // namespace stillwick
