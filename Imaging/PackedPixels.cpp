#include "Imaging/PackedPixels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include <libdeflate.h>

namespace stillwick {

namespace {

constexpr int channels = 4;
/// What is packed is read again soon and on this machine: speed before size.
constexpr int compressionLevel = 1;

struct CompressorDeleter {
    void operator()(libdeflate_compressor* compressor) const noexcept {
        libdeflate_free_compressor(compressor);
    }
};
struct DecompressorDeleter {
    void operator()(libdeflate_decompressor* decompressor) const noexcept {
        libdeflate_free_decompressor(decompressor);
    }
};

/// The channels of a picture one after the other, unfilled.
struct Planes {
    explicit Planes(const QImage& image)
        : width(std::size_t(image.width())), planeSize(width * std::size_t(image.height())),
          bytes(new std::uint8_t[planeSize * channels]) {}

    [[nodiscard]] std::size_t size() const { return planeSize * channels; }
    /// Where row `y` of a channel begins.
    [[nodiscard]] std::uint8_t* row(int channel, int y) const {
        return bytes.get() + planeSize * std::size_t(channel) + width * std::size_t(y);
    }

    std::size_t width;
    std::size_t planeSize;
    std::unique_ptr<std::uint8_t[]> bytes;
};

/// A row's channels as they are kept: the outer colours less the middle one, which all three
/// follow.
void separate(const std::uint8_t* __restrict pixels, std::size_t width,
              std::uint8_t* __restrict first, std::uint8_t* __restrict middle,
              std::uint8_t* __restrict last, std::uint8_t* __restrict alpha) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint8_t* pixel = pixels + channels * x;
        first[x] = std::uint8_t(pixel[0] - pixel[1]);
        middle[x] = pixel[1];
        last[x] = std::uint8_t(pixel[2] - pixel[1]);
        alpha[x] = pixel[3];
    }
}

void unite(const std::uint8_t* __restrict first, const std::uint8_t* __restrict middle,
           const std::uint8_t* __restrict last, const std::uint8_t* __restrict alpha,
           std::size_t width, std::uint8_t* __restrict pixels) {
    for (std::size_t x = 0; x < width; ++x) {
        std::uint8_t* pixel = pixels + channels * x;
        pixel[0] = std::uint8_t(first[x] + middle[x]);
        pixel[1] = middle[x];
        pixel[2] = std::uint8_t(last[x] + middle[x]);
        pixel[3] = alpha[x];
    }
}

void subtractAbove(std::uint8_t* __restrict row, const std::uint8_t* __restrict above,
                   std::size_t width) {
    for (std::size_t x = 0; x < width; ++x)
        row[x] = std::uint8_t(row[x] - above[x]);
}

void addAbove(std::uint8_t* __restrict row, const std::uint8_t* __restrict above,
              std::size_t width) {
    for (std::size_t x = 0; x < width; ++x)
        row[x] = std::uint8_t(row[x] + above[x]);
}

bool holdsFourBytes(const QImage& image) {
    return image.depth() == 8 * channels;
}

} // namespace

QByteArray packedPixels(const QImage& image) {
    Q_ASSERT(holdsFourBytes(image) && !image.isNull());
    const Planes planes(image);
    for (int y = 0; y < image.height(); ++y)
        separate(image.constScanLine(y), planes.width, planes.row(0, y), planes.row(1, y),
                 planes.row(2, y), planes.row(3, y));
    for (int channel = 0; channel < channels; ++channel)
        for (int y = image.height() - 1; y > 0; --y)
            subtractAbove(planes.row(channel, y), planes.row(channel, y - 1), planes.width);
    const std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor(
        libdeflate_alloc_compressor(compressionLevel));
    if (!compressor)
        throw std::bad_alloc();
    QByteArray packed(qsizetype(libdeflate_deflate_compress_bound(compressor.get(), planes.size())),
                      Qt::Uninitialized);
    const std::size_t size =
        libdeflate_deflate_compress(compressor.get(), planes.bytes.get(), planes.size(),
                                    packed.data(), std::size_t(packed.size()));
    Q_ASSERT(size > 0); // the bound is one
    packed.truncate(qsizetype(size));
    packed.squeeze();
    return packed;
}

bool unpackPixels(const QByteArray& packed, QImage& image) {
    Q_ASSERT(holdsFourBytes(image) && !image.isNull());
    const Planes planes(image);
    const std::unique_ptr<libdeflate_decompressor, DecompressorDeleter> decompressor(
        libdeflate_alloc_decompressor());
    if (!decompressor)
        throw std::bad_alloc();
    const libdeflate_result result = libdeflate_deflate_decompress(
        decompressor.get(), packed.constData(), std::size_t(packed.size()), planes.bytes.get(),
        planes.size(), nullptr);
    if (result != LIBDEFLATE_SUCCESS)
        return false;
    for (int y = 0; y < image.height(); ++y) {
        for (int channel = 0; channel < channels && y > 0; ++channel)
            addAbove(planes.row(channel, y), planes.row(channel, y - 1), planes.width);
        unite(planes.row(0, y), planes.row(1, y), planes.row(2, y), planes.row(3, y), planes.width,
              image.scanLine(y));
    }
    return true;
}

} // namespace stillwick
