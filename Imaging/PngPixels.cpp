#include "Imaging/PngPixels.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include <libdeflate.h>

namespace stillwick {

namespace {

constexpr int bytesPerPixel = 4;
/// Measured on cut-outs of 720p and 1080p, plain and styled: at most 5 % larger than what Qt's own
/// writer makes, in a third to a fifth of its time. Higher levels cost more than they gain.
constexpr int compressionLevel = 2;

enum Filter : std::uint8_t { None = 0, Sub = 1, Up = 2, Paeth = 4 };

/// A row and the one above it, each with one transparent pixel before its first.
struct RowPair {
    const uchar* row;
    const uchar* above;
    int bytes;
};

uchar paethPredictor(int left, int above, int aboveLeft) {
    const int estimate = left + above - aboveLeft;
    const int toLeft = std::abs(estimate - left);
    const int toAbove = std::abs(estimate - above);
    const int toAboveLeft = std::abs(estimate - aboveLeft);
    if (toLeft <= toAbove && toLeft <= toAboveLeft)
        return uchar(left);
    return uchar(toAbove <= toAboveLeft ? above : aboveLeft);
}

template <Filter filter>
void apply(const RowPair& rows, uchar* out) {
    for (int i = 0; i < rows.bytes; ++i) {
        const uchar left = rows.row[i - bytesPerPixel];
        if constexpr (filter == Sub)
            out[i] = uchar(rows.row[i] - left);
        else if constexpr (filter == Up)
            out[i] = uchar(rows.row[i] - rows.above[i]);
        else
            out[i] = uchar(rows.row[i] -
                           paethPredictor(left, rows.above[i], rows.above[i - bytesPerPixel]));
    }
}

/// The sum of absolute differences that a filter left.
long costOf(const uchar* filtered, int bytes) {
    long sum = 0;
    for (int i = 0; i < bytes; ++i)
        sum += std::min<int>(filtered[i], 256 - filtered[i]);
    return sum;
}

/// The rows of a picture, each after the filter that suits it best.
class FilteredRows {
public:
    explicit FilteredRows(const QImage& image)
        : m_bytes(image.width() * bytesPerPixel), m_row(padded()), m_above(padded()),
          m_candidate(std::size_t(m_bytes)),
          m_result(std::size_t(m_bytes + 1) * std::size_t(image.height())) {
        uchar* out = m_result.data();
        for (int y = 0; y < image.height(); ++y, out += m_bytes + 1) {
            std::memcpy(m_row.data() + bytesPerPixel, image.constScanLine(y), std::size_t(m_bytes));
            addRow(out);
            m_row.swap(m_above);
        }
    }

    [[nodiscard]] const std::vector<uchar>& result() const { return m_result; }

private:
    [[nodiscard]] std::vector<uchar> padded() const {
        return std::vector<uchar>(std::size_t(m_bytes) + bytesPerPixel);
    }

    void addRow(uchar* out) {
        const RowPair rows{m_row.data() + bytesPerPixel, m_above.data() + bytesPerPixel, m_bytes};
        // Rows that repeat the one above, empty ones above all.
        out[0] = Up;
        if (m_row == m_above) {
            std::memset(out + 1, 0, std::size_t(m_bytes));
            return;
        }
        apply<Up>(rows, out + 1);
        long best = costOf(out + 1, m_bytes);
        offer<Sub>(rows, out, best);
        offer<Paeth>(rows, out, best);
    }

    template <Filter filter>
    void offer(const RowPair& rows, uchar* out, long& best) {
        apply<filter>(rows, m_candidate.data());
        const long cost = costOf(m_candidate.data(), m_bytes);
        if (cost >= best)
            return;
        best = cost;
        out[0] = filter;
        std::memcpy(out + 1, m_candidate.data(), std::size_t(m_bytes));
    }

    int m_bytes;
    std::vector<uchar> m_row;
    std::vector<uchar> m_above;
    std::vector<uchar> m_candidate;
    std::vector<uchar> m_result;
};

struct CompressorDeleter {
    void operator()(libdeflate_compressor* compressor) const noexcept {
        libdeflate_free_compressor(compressor);
    }
};

} // namespace

QByteArray compressedPixels(const QImage& image) {
    Q_ASSERT(image.format() == QImage::Format_RGBA8888 && !image.isNull());
    constexpr int widest = std::numeric_limits<int>::max() / bytesPerPixel - 2;
    if (image.width() > widest)
        throw std::bad_alloc();
    const FilteredRows rows(image);
    const std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor(
        libdeflate_alloc_compressor(compressionLevel));
    if (!compressor)
        throw std::bad_alloc();
    const std::vector<uchar>& bytes = rows.result();
    QByteArray compressed(qsizetype(libdeflate_zlib_compress_bound(compressor.get(), bytes.size())),
                          Qt::Uninitialized);
    const std::size_t size =
        libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), compressed.data(),
                                 std::size_t(compressed.size()));
    Q_ASSERT(size > 0); // the bound is one
    compressed.truncate(qsizetype(size));
    return compressed;
}

} // namespace stillwick
