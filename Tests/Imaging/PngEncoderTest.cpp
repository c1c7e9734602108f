#include "Imaging/PngEncoder.h"

#include "Imaging/ImagingError.h"

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include <png.h>

namespace stillwick {

namespace {

/// A chunk of a PNG file, as ISO/IEC 15948 clause 5.3 lays it out.
struct Chunk {
    std::string type;
    QByteArray data;
};

quint32 bigEndian(const QByteArray& bytes, qsizetype at) {
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

/// The CRC of clause D of the standard, bit by bit.
quint32 crcOf(const QByteArray& bytes) {
    quint32 crc = 0xFFFFFFFFU;
    for (const char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? 0xEDB88320U ^ (crc >> 1U) : crc >> 1U;
    }
    return ~crc;
}

std::vector<Chunk> chunksOf(const QByteArray& file) {
    EXPECT_EQ(file.left(8), QByteArray("\x89PNG\r\n\x1a\n", 8));
    std::vector<Chunk> chunks;
    for (qsizetype at = 8; at < file.size();) {
        const qsizetype length = bigEndian(file, at);
        const QByteArray typeAndData = file.mid(at + 4, 4 + length);
        EXPECT_EQ(crcOf(typeAndData), bigEndian(file, at + 8 + length));
        chunks.push_back({typeAndData.left(4).toStdString(), typeAndData.mid(4)});
        at += 12 + length;
    }
    return chunks;
}

/// The data of all chunks of a type, one after the other; null if there is none.
QByteArray dataOf(const std::vector<Chunk>& chunks, const std::string& type) {
    QByteArray data;
    for (const Chunk& chunk : chunks)
        if (chunk.type == type)
            data += chunk.data;
    return data;
}

QByteArray inflated(const QByteArray& zlibStream, qsizetype expectedSize) {
    QByteArray prefixed(4, '\0');
    qToBigEndian(static_cast<quint32>(expectedSize), prefixed.data());
    return qUncompress(prefixed + zlibStream);
}

/// The lines of a picture with their filter bytes, still filtered.
QByteArray filteredLines(const QByteArray& file, const QSize& size) {
    const qsizetype lineSize = 1 + 4 * qsizetype{size.width()};
    QByteArray lines = inflated(dataOf(chunksOf(file), "IDAT"), lineSize * size.height());
    EXPECT_EQ(lines.size(), lineSize * size.height());
    return lines;
}

/// What a filter takes off a byte, by clause 9.2 of the standard.
int predictionOf(char filter, int left, int above, int aboveLeft) {
    if (filter == 1)
        return left;
    if (filter == 2)
        return above;
    if (filter != 4) {
        EXPECT_EQ(filter, 0);
        return 0;
    }
    const int p = left + above - aboveLeft;
    const int pa = std::abs(p - left);
    const int pb = std::abs(p - above);
    const int pc = std::abs(p - aboveLeft);
    return pa <= pb && pa <= pc ? left : pb <= pc ? above : aboveLeft;
}

/// The RGBA bytes of a file, without libpng: inflated, and the filters undone.
QByteArray rgbaOf(const QByteArray& file, const QSize& size) {
    const QByteArray lines = filteredLines(file, size);
    const qsizetype width = 4 * qsizetype{size.width()};
    QByteArray pixels;
    // A byte of the pixels so far; 0 outside the picture.
    const auto byteAt = [&pixels, width](qsizetype x, qsizetype y) {
        return x < 0 || y < 0 ? 0 : int(static_cast<quint8>(pixels.at(y * width + x)));
    };
    for (qsizetype y = 0; y < size.height(); ++y) {
        const qsizetype start = y * (width + 1);
        for (qsizetype x = 0; x < width; ++x)
            pixels += static_cast<char>(lines.at(start + 1 + x) +
                                        predictionOf(lines.at(start), byteAt(x - 4, y),
                                                     byteAt(x, y - 1), byteAt(x - 4, y - 1)));
    }
    return pixels;
}

/// The RGBA bytes of a file by libpng's simplified reader.
QByteArray rgbaByLibpng(const QByteArray& file) {
    png_image reader{};
    reader.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&reader, file.constData(),
                                               static_cast<std::size_t>(file.size())),
              0);
    reader.format = PNG_FORMAT_RGBA;
    QByteArray pixels(static_cast<qsizetype>(PNG_IMAGE_SIZE(reader)), '\0');
    EXPECT_NE(png_image_finish_read(&reader, nullptr, pixels.data(), 0, nullptr), 0);
    return pixels;
}

using Pixel = std::array<int, 4>;

Pixel pixelAt(const QByteArray& rgba, qsizetype index) {
    Pixel pixel{};
    for (std::size_t channel = 0; channel < 4; ++channel)
        pixel.at(channel) = static_cast<quint8>(rgba.at(4 * index + qsizetype(channel)));
    return pixel;
}

/// Pixels given as premultiplied RGBA, in one column so that every line is filtered.
QImage premultipliedColumn(const std::vector<Pixel>& pixels) {
    QImage image(1, static_cast<int>(pixels.size()), QImage::Format_RGBA8888_Premultiplied);
    for (int y = 0; y < image.height(); ++y)
        for (std::size_t channel = 0; channel < 4; ++channel)
            image.scanLine(y)[channel] =
                static_cast<uchar>(pixels.at(static_cast<std::size_t>(y)).at(channel));
    return image;
}

/// Opaque colours that differ everywhere: red counts columns, green lines.
QImage opaquePattern(QImage::Format format, const QSize& size = {16, 9}) {
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x * 15, y * 28, 255 - x));
    return image;
}

QByteArray patternBytes(const QSize& size = {16, 9}) {
    QByteArray bytes;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            for (const int value : {x * 15, y * 28, 255 - x, 255})
                bytes += static_cast<char>(value);
    return bytes;
}

ImagingError::Category categoryThrownFor(const QImage& image) {
    try {
        (void)encodePng(image);
    } catch (const ImagingError& error) {
        EXPECT_FALSE(error.description().isEmpty());
        return error.category();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

TEST(PngEncoderTest, TheHeaderSaysEightBitRgbaWithoutInterlacing) {
    const auto chunks = chunksOf(encodePng(opaquePattern(QImage::Format_RGB32, {300, 2})));
    ASSERT_EQ(chunks.front().type, "IHDR");
    // Width 300, height 2, depth 8, colour type 6, compression, filter and interlace methods 0.
    EXPECT_EQ(chunks.front().data, QByteArray("\0\0\x01\x2c\0\0\0\x02\x08\x06\0\0\0", 13));
    EXPECT_EQ(chunks.back().type, "IEND");
}

TEST(PngEncoderTest, EachLineTakesTheFilterThatLeavesTheLeast) {
    const auto filterOfSecondLine = [](auto colorAt) {
        QImage image(32, 2, QImage::Format_RGBA8888);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 32; ++x)
                image.setPixelColor(x, y, colorAt(x, y));
        return int(filteredLines(encodePng(image), {32, 2}).at(1 + 4 * 32));
    };
    // Columns alike: nothing is left by Up. A line of one colour: little is left by Sub.
    EXPECT_EQ(filterOfSecondLine([](int x, int) { return QColor(7 * x, 0, 90); }), 2);
    EXPECT_EQ(filterOfSecondLine([](int x, int y) {
                  return y == 0 ? QColor(7 * x, x * x % 256, 90) : QColor(80, 80, 80);
              }),
              1);
    // A slope across and a step down: only what both neighbours tell together leaves nothing.
    EXPECT_EQ(filterOfSecondLine([](int x, int y) {
                  const int step = x < 16 ? 0 : 60;
                  return y == 0 ? QColor(step, 2 * x, 9) : QColor(step + 40, 2 * x + 40, 49);
              }),
              4);
}

// RFC 1950: the two upper bits of the second byte tell the level; 1 stands for levels 2 to 5.
TEST(PngEncoderTest, TheStreamIsMarkedAsCompressedFast) {
    const QByteArray data =
        dataOf(chunksOf(encodePng(opaquePattern(QImage::Format_RGB32))), "IDAT");
    EXPECT_EQ(static_cast<quint8>(data.at(1)) >> 6U, 1);
}

TEST(PngEncoderTest, OpaqueColorsAreExactFromEveryEightBitFormat) {
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied,
          QImage::Format_RGB888, QImage::Format_BGR888, QImage::Format_RGBX8888,
          QImage::Format_RGBA8888, QImage::Format_RGBA8888_Premultiplied}) {
        const QByteArray file = encodePng(opaquePattern(format));
        EXPECT_EQ(rgbaOf(file, {16, 9}), patternBytes()) << "format " << format;
    }
}

TEST(PngEncoderTest, IndependentReadersAgreeOnThePixels) {
    const QByteArray file = encodePng(opaquePattern(QImage::Format_RGBA8888_Premultiplied));
    EXPECT_EQ(rgbaByLibpng(file), patternBytes());
    const QImage decoded = QImage::fromData(file, "PNG");
    ASSERT_EQ(decoded.size(), QSize(16, 9));
    EXPECT_TRUE(decoded.hasAlphaChannel());
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 16; ++x)
            ASSERT_EQ(decoded.pixel(x, y), qRgb(x * 15, y * 28, 255 - x));
}

// On paper: 64 * 255/128 = 127.5, 1 * 255/2 = 127.5, 1 * 255/3 = 85, 33 * 255/100 = 84.15,
// 50 * 255/100 = 127.5, 99 * 255/100 = 252.45, 7 * 255/200 = 8.925, 199 * 255/200 = 253.725.
TEST(PngEncoderTest, TranslucentColorsAreDividedByAlphaHalvesUp) {
    const QByteArray rgba = rgbaOf(encodePng(premultipliedColumn({{64, 0, 128, 128},
                                                                  {1, 2, 0, 2},
                                                                  {1, 2, 3, 3},
                                                                  {33, 50, 99, 100},
                                                                  {7, 199, 200, 200}})),
                                   {1, 5});
    EXPECT_EQ(pixelAt(rgba, 0), (Pixel{128, 0, 255, 128}));
    EXPECT_EQ(pixelAt(rgba, 1), (Pixel{128, 255, 0, 2}));
    EXPECT_EQ(pixelAt(rgba, 2), (Pixel{85, 170, 255, 3}));
    EXPECT_EQ(pixelAt(rgba, 3), (Pixel{84, 128, 252, 100}));
    EXPECT_EQ(pixelAt(rgba, 4), (Pixel{9, 254, 255, 200}));
}

// The nearest straight colour s to c * 255 / a is within a half: |2 (s a - 255 c)| <= a.
TEST(PngEncoderTest, EveryTranslucentColorBecomesTheNearestStraightOne) {
    std::vector<Pixel> pixels;
    for (int alpha = 1; alpha < 256; ++alpha)
        for (int color = 0; color <= alpha; ++color)
            pixels.push_back({color, color, color, alpha});
    const QImage image = premultipliedColumn(pixels);
    const QByteArray rgba = rgbaOf(encodePng(image), image.size());
    int wrong = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const Pixel straight = pixelAt(rgba, static_cast<qsizetype>(i));
        const int color = pixels[i][0];
        const int alpha = pixels[i][3];
        wrong += 2 * std::abs(straight[0] * alpha - 255 * color) > alpha || straight[3] != alpha;
    }
    EXPECT_EQ(wrong, 0);
}

TEST(PngEncoderTest, AColorAboveItsAlphaIsClamped) {
    const QByteArray rgba =
        rgbaOf(encodePng(premultipliedColumn({{200, 10, 255, 100}, {0, 0, 0, 0}})), {1, 2});
    EXPECT_EQ(pixelAt(rgba, 0), (Pixel{255, 26, 255, 100})); // 10 * 255/100 = 25.5
}

TEST(PngEncoderTest, StraightColorsAreWrittenAsTheyAre) {
    QImage image(1, 2, QImage::Format_RGBA8888);
    const std::array<uchar, 8> bytes{10, 20, 30, 1, 200, 100, 50, 0};
    std::copy_n(bytes.data(), 4, image.scanLine(0));
    std::copy_n(bytes.data() + 4, 4, image.scanLine(1));
    const QByteArray rgba = rgbaOf(encodePng(image), {1, 2});
    EXPECT_EQ(pixelAt(rgba, 0), (Pixel{10, 20, 30, 1}));
    EXPECT_EQ(pixelAt(rgba, 1), (Pixel{200, 100, 50, 0}));
}

TEST(PngEncoderTest, AFullyTransparentPictureKeepsItsSize) {
    QImage image(640, 360, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::transparent);
    const QByteArray file = encodePng(image);
    EXPECT_EQ(QImage::fromData(file).size(), QSize(640, 360));
    EXPECT_EQ(rgbaOf(file, {640, 360}), QByteArray(qsizetype{640} * 360 * 4, '\0'));
}

TEST(PngEncoderTest, ASinglePixelAndASingleLineAreWritten) {
    EXPECT_EQ(rgbaOf(encodePng(opaquePattern(QImage::Format_RGB32, {1, 1})), {1, 1}),
              patternBytes({1, 1}));
    EXPECT_EQ(rgbaOf(encodePng(opaquePattern(QImage::Format_RGB32, {17, 1})), {17, 1}),
              patternBytes({17, 1}));
}

TEST(PngEncoderTest, LinesThatAreNotPackedAreReadFromTheirOwnStart) {
    std::vector<uchar> buffer(60, 0xEE); // two pixels of each line are padding
    for (std::size_t y = 0; y < 3; ++y)
        for (std::size_t x = 0; x < 3; ++x)
            for (std::size_t channel = 0; channel < 4; ++channel)
                buffer[20 * y + 4 * x + channel] = channel == 3 ? 255 : uchar(10 * y + x);
    const QImage image(buffer.data(), 3, 3, 20, QImage::Format_RGBA8888_Premultiplied);
    const QByteArray rgba = rgbaOf(encodePng(image), {3, 3});
    EXPECT_EQ(pixelAt(rgba, 5), (Pixel{12, 12, 12, 255}));
    EXPECT_EQ(pixelAt(rgba, 6), (Pixel{20, 20, 20, 255}));
}

TEST(PngEncoderTest, ThePixelRatioOfAScreenDoesNotChangeTheSize) {
    QImage image = opaquePattern(QImage::Format_RGB32);
    image.setDevicePixelRatio(2);
    EXPECT_EQ(QImage::fromData(encodePng(image)).size(), QSize(16, 9));
}

// The values that the standard gives for sRGB in clauses 11.3.3.2 and 11.3.3.5.
void expectSrgbChunks(const std::vector<Chunk>& chunks) {
    EXPECT_EQ(dataOf(chunks, "sRGB").size(), 1);
    ASSERT_EQ(dataOf(chunks, "gAMA").size(), 4);
    EXPECT_EQ(bigEndian(dataOf(chunks, "gAMA"), 0), 45455U);
    const QByteArray chromaticities = dataOf(chunks, "cHRM");
    ASSERT_EQ(chromaticities.size(), 32);
    constexpr std::array expected{31270U, 32900U, 64000U, 33000U, 30000U, 60000U, 15000U, 6000U};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(bigEndian(chromaticities, static_cast<qsizetype>(4 * i)), expected.at(i));
    EXPECT_TRUE(dataOf(chunks, "iCCP").isNull());
}

TEST(PngEncoderTest, AnSrgbPictureSaysSo) {
    QImage image = opaquePattern(QImage::Format_RGB32);
    image.setColorSpace(QColorSpace::SRgb);
    expectSrgbChunks(chunksOf(encodePng(image)));
}

TEST(PngEncoderTest, APictureWithoutAColorSpaceIsWrittenAsSrgb) {
    const QImage image = opaquePattern(QImage::Format_RGB32);
    ASSERT_FALSE(image.colorSpace().isValid());
    expectSrgbChunks(chunksOf(encodePng(image)));
}

TEST(PngEncoderTest, AnotherColorSpaceIsEmbeddedAsItsProfile) {
    for (const auto space :
         {QColorSpace::DisplayP3, QColorSpace::AdobeRgb, QColorSpace::SRgbLinear}) {
        QImage image = opaquePattern(QImage::Format_RGBA8888_Premultiplied);
        image.setColorSpace(space);
        const auto chunks = chunksOf(encodePng(image));
        const QByteArray data = dataOf(chunks, "iCCP");
        const qsizetype nameEnd = data.indexOf('\0');
        ASSERT_GT(nameEnd, 0);
        EXPECT_EQ(data.at(nameEnd + 1), 0); // compression method: deflate
        const QByteArray expected = QColorSpace(space).iccProfile();
        EXPECT_EQ(inflated(data.mid(nameEnd + 2), expected.size()), expected);
        EXPECT_TRUE(dataOf(chunks, "sRGB").isNull());
    }
}

TEST(PngEncoderTest, APictureOfAnotherColorSpaceIsNotConverted) {
    QImage image = opaquePattern(QImage::Format_RGBA8888_Premultiplied);
    image.setColorSpace(QColorSpace::DisplayP3);
    const QByteArray file = encodePng(image);
    EXPECT_EQ(rgbaOf(file, {16, 9}), patternBytes());
    EXPECT_EQ(QImage::fromData(file).colorSpace(), QColorSpace(QColorSpace::DisplayP3));
}

TEST(PngEncoderTest, NoPictureIsRefused) {
    EXPECT_EQ(categoryThrownFor(QImage()), ImagingError::Category::EmptyPicture);
}

// libpng writes pictures of up to 1,000,000 pixels in width.
TEST(PngEncoderTest, APictureTooWideForLibpngIsRefusedWithItsWords) {
    const QImage image(1'000'001, 1, QImage::Format_RGBA8888_Premultiplied);
    try {
        (void)encodePng(image);
        FAIL() << "nothing was thrown";
    } catch (const ImagingError& error) {
        EXPECT_EQ(error.category(), ImagingError::Category::EncodingFailed);
        EXPECT_EQ(error.description(), "L'image n'a pas pu être convertie en PNG.");
        EXPECT_FALSE(error.libraryText().isEmpty());
    }
}

// Bytes 64 to 67 of a profile are its rendering intent, of which there are four.
TEST(PngEncoderTest, AProfileThatAPngCannotHoldIsAnErrorAndNotLeftOut) {
    QByteArray profile = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    profile[64] = '\x7f';
    const QColorSpace space = QColorSpace::fromIccProfile(profile);
    ASSERT_TRUE(space.isValid());
    QImage image = opaquePattern(QImage::Format_RGB32);
    image.setColorSpace(space);
    EXPECT_EQ(categoryThrownFor(image), ImagingError::Category::UnfitColorProfile);
}

} // namespace

} // namespace stillwick
