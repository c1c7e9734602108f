#include "HandmadeFrame.h"

#include "Media/MediaError.h"
#include "Media/PictureConverter.h"

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QRect>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace stillwick::testing {

namespace {

// One level for the rounding of the samples, one for the rounding of the result.
constexpr int tolerance = 2;

/// A matrix as its standard gives it: the shares of red and blue in the luma.
struct Standard {
    AVColorSpace tag = AVCOL_SPC_UNSPECIFIED;
    double red = 0;
    double blue = 0;
};

constexpr Standard bt601{AVCOL_SPC_SMPTE170M, 0.299, 0.114};
constexpr Standard bt709{AVCOL_SPC_BT709, 0.2126, 0.0722};
constexpr Standard bt2020{AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593};

/// Samples in units of 8 bits: limited range has black at 16, white at 235, no colour at 128.
struct Sample {
    double y = 16;
    double cb = 128;
    double cr = 128;
};

int byteOf(double value) {
    return int(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

/// The textbook: Y = Kr R + Kg G + Kb B; Cb and Cr are B - Y and R - Y scaled to -0.5 … 0.5.
Stored onPaper(const Standard& standard, double y, double cb, double cr) {
    const double r = y + 2 * (1 - standard.red) * cr;
    const double b = y + 2 * (1 - standard.blue) * cb;
    const double g =
        (y - standard.red * r - standard.blue * b) / (1 - standard.red - standard.blue);
    return {byteOf(r), byteOf(g), byteOf(b), 255};
}

Stored limitedOnPaper(const Standard& standard, const Sample& sample) {
    return onPaper(standard, (sample.y - 16) / 219, (sample.cb - 128) / 224,
                   (sample.cr - 128) / 224);
}

/// Full range counts to 2^depth - 1, not to 255 * 2^(depth - 8).
Stored fullOnPaper(const Standard& standard, const Sample& sample, int depth) {
    const double scale = double(1 << (depth - 8)) / double((1 << depth) - 1);
    return onPaper(standard, sample.y * scale, (sample.cb - 128) * scale,
                   (sample.cr - 128) * scale);
}

// Inside and outside of what RGB holds: the latter is clipped.
constexpr std::array samples = {
    Sample{16, 128, 128},  Sample{235, 128, 128}, Sample{126, 128, 128}, Sample{81, 90, 240},
    Sample{145, 54, 34},   Sample{41, 240, 110},  Sample{180, 100, 150}, Sample{60, 140, 120},
    Sample{200, 120, 131}, Sample{5, 128, 128},   Sample{250, 128, 128},
};

/// A flat picture of one colour.
HandmadeFrame flat(AVPixelFormat format, const Sample& sample, int width = 64, int height = 48) {
    HandmadeFrame frame(format, width, height);
    const int unit = 1 << (frame.depth() - 8);
    frame.fill(0, int(sample.y) * unit);
    if (av_pix_fmt_desc_get(format)->nb_components > 2) {
        frame.fill(1, int(sample.cb) * unit);
        frame.fill(2, int(sample.cr) * unit);
    }
    return frame;
}

QImage convert(const HandmadeFrame& frame, const TrackDescription& track = {}) {
    return PictureConverter().convert(frame.video(track));
}

/// The one colour of a flat picture; fails where it is not flat.
Stored colorOfFlat(const QImage& image) {
    const Stored color = storedAt(image, 0, 0);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (!(storedAt(image, x, y) == color)) {
                ADD_FAILURE() << "another colour at " << x << ", " << y;
                return color;
            }
        }
    }
    return color;
}

void expectNear(const Stored& actual, const Stored& expected, int levels = tolerance) {
    EXPECT_LE(distance(actual, expected), levels)
        << ::testing::PrintToString(actual) << " for " << ::testing::PrintToString(expected);
}

TEST(PictureConverterTest, TheResultIsPremultipliedRgbaInSrgb) {
    const QImage image = convert(flat(AV_PIX_FMT_YUV420P, {126, 128, 128}));
    EXPECT_EQ(image.format(), QImage::Format_RGBA8888_Premultiplied);
    EXPECT_EQ(image.colorSpace(), QColorSpace(QColorSpace::SRgb));
    EXPECT_EQ(image.size(), QSize(64, 48));
    EXPECT_EQ(storedAt(image, 10, 10).a, 255);
}

class MatrixTest : public ::testing::TestWithParam<Standard> {
protected:
    static constexpr std::array formats = {
        AV_PIX_FMT_YUV420P,   AV_PIX_FMT_YUV422P,   AV_PIX_FMT_YUV444P,   AV_PIX_FMT_YUV420P10,
        AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV420P12, AV_PIX_FMT_YUV422P12,
        AV_PIX_FMT_YUV444P12, AV_PIX_FMT_NV12,      AV_PIX_FMT_P010,      AV_PIX_FMT_UYVY422,
    };
};

TEST_P(MatrixTest, LimitedRangeFollowsTheTextbook) {
    for (const AVPixelFormat format : formats) {
        for (const Sample& sample : samples) {
            HandmadeFrame frame = flat(format, sample);
            frame.tags().colorspace = GetParam().tag;
            frame.tags().color_range = AVCOL_RANGE_MPEG;
            SCOPED_TRACE(av_get_pix_fmt_name(format));
            expectNear(colorOfFlat(convert(frame)), limitedOnPaper(GetParam(), sample));
        }
    }
}

TEST_P(MatrixTest, FullRangeFollowsTheTextbook) {
    for (const AVPixelFormat format : formats) {
        for (const Sample& sample : samples) {
            HandmadeFrame frame = flat(format, sample);
            frame.tags().colorspace = GetParam().tag;
            frame.tags().color_range = AVCOL_RANGE_JPEG;
            SCOPED_TRACE(av_get_pix_fmt_name(format));
            expectNear(colorOfFlat(convert(frame)), fullOnPaper(GetParam(), sample, frame.depth()));
        }
    }
}

std::string nameOf(const ::testing::TestParamInfo<Standard>& info) {
    return av_color_space_name(info.param.tag);
}

INSTANTIATE_TEST_SUITE_P(PictureConverterTest, MatrixTest, ::testing::Values(bt601, bt709, bt2020),
                         nameOf);

constexpr Sample telling{100, 90, 190}; // BT.601 and BT.709 differ by some 20 levels here

TEST(PictureConverterTest, UntaggedPicturesAreBt601BelowHighDefinition) {
    for (const QSize size : {QSize(64, 48), QSize(720, 576), QSize(1278, 718)}) {
        const HandmadeFrame frame = flat(AV_PIX_FMT_YUV420P, telling, size.width(), size.height());
        expectNear(storedAt(convert(frame), 5, 5), limitedOnPaper(bt601, telling));
    }
}

TEST(PictureConverterTest, UntaggedPicturesAreBt709FromHighDefinitionOn) {
    for (const QSize size : {QSize(1280, 720), QSize(1280, 544), QSize(960, 720)}) {
        const HandmadeFrame frame = flat(AV_PIX_FMT_YUV420P, telling, size.width(), size.height());
        expectNear(storedAt(convert(frame), 5, 5), limitedOnPaper(bt709, telling));
    }
}

TEST(PictureConverterTest, TheTagWinsOverTheSize) {
    HandmadeFrame small = flat(AV_PIX_FMT_YUV420P, telling);
    small.tags().colorspace = AVCOL_SPC_BT709;
    expectNear(colorOfFlat(convert(small)), limitedOnPaper(bt709, telling));
    HandmadeFrame large = flat(AV_PIX_FMT_YUV420P, telling, 1280, 720);
    large.tags().colorspace = AVCOL_SPC_BT470BG;
    expectNear(storedAt(convert(large), 5, 5), limitedOnPaper(bt601, telling));
}

TEST(PictureConverterTest, FormatsOfJpegAreFullRangeWithoutATag) {
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P})
        expectNear(colorOfFlat(convert(flat(format, telling))), fullOnPaper(bt601, telling, 8));
}

TEST(PictureConverterTest, GreysUseTheirFullRangeUnlessTaggedOrAVideoCodecs) {
    for (const AVPixelFormat format : {AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY10, AV_PIX_FMT_GRAY16}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        HandmadeFrame frame = flat(format, {100, 128, 128});
        expectNear(colorOfFlat(convert(frame)), {100, 100, 100, 255});
        const Stored limited = limitedOnPaper(bt709, {100, 128, 128});
        TrackDescription videoCodec;
        videoCodec.isGreyFullRange = false;
        expectNear(colorOfFlat(convert(frame, videoCodec)), limited);
        frame.tags().color_range = AVCOL_RANGE_MPEG;
        expectNear(colorOfFlat(convert(frame)), limited);
    }
}

TEST(PictureConverterTest, RgbIsTakenAsItIs) {
    constexpr std::array formats = {AV_PIX_FMT_RGB24,  AV_PIX_FMT_BGR24, AV_PIX_FMT_GBRP,
                                    AV_PIX_FMT_BGR0,   AV_PIX_FMT_0RGB,  AV_PIX_FMT_GBRP10,
                                    AV_PIX_FMT_GBRP12, AV_PIX_FMT_RGB48, AV_PIX_FMT_RGB48BE};
    for (const AVPixelFormat format : formats) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        HandmadeFrame frame(format, 33, 17);
        const double scale = double((1 << frame.depth()) - 1) / 255;
        frame.fill(0, int(std::lround(200 * scale)));
        frame.fill(1, int(std::lround(100 * scale)));
        frame.fill(2, int(std::lround(7 * scale)));
        expectNear(colorOfFlat(convert(frame)), {200, 100, 7, 255}, frame.depth() == 8 ? 0 : 1);
    }
}

TEST(PictureConverterTest, PalettesAreLookedUpWithTheirTransparency) {
    HandmadeFrame frame(AV_PIX_FMT_PAL8, 16, 8);
    auto* palette = reinterpret_cast<std::uint32_t*>(frame.tags().data[1]);
    palette[0] = 0xff0a141e; // A, R, G, B
    palette[1] = 0x80ffffff;
    palette[2] = 0x00ffffff;
    frame.set(0, 1, 0, 1);
    frame.set(0, 2, 0, 2);
    const QImage image = convert(frame);
    EXPECT_EQ(storedAt(image, 0, 0), (Stored{10, 20, 30, 255}));
    EXPECT_EQ(storedAt(image, 1, 0), (Stored{128, 128, 128, 128}));
    EXPECT_EQ(storedAt(image, 2, 0), (Stored{0, 0, 0, 0}));
}

// 200, 100, 50 at 128 / 255: 100.4, 50.2, 25.1.
TEST(PictureConverterTest, StraightAlphaIsMultipliedIn) {
    for (const AVPixelFormat format :
         {AV_PIX_FMT_RGBA, AV_PIX_FMT_BGRA, AV_PIX_FMT_ARGB, AV_PIX_FMT_GBRAP, AV_PIX_FMT_RGBA64}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        HandmadeFrame frame(format, 32, 16);
        const int unit = frame.depth() == 8 ? 1 : 257;
        constexpr std::array color = {200, 100, 50, 128};
        for (int component = 0; component < 4; ++component)
            frame.fill(component, color.at(std::size_t(component)) * unit);
        expectNear(colorOfFlat(convert(frame)), {100, 50, 25, 128}, frame.depth() == 8 ? 0 : 1);
    }
}

TEST(PictureConverterTest, TransparentVideoIsPremultiplied) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA444P10}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        const Stored opaque = limitedOnPaper(bt601, telling);
        for (const int alpha : {0, 64, 128, 255}) {
            HandmadeFrame frame = flat(format, telling);
            frame.fill(3, frame.depth() == 8 ? alpha : int(std::lround(alpha * 1023 / 255.0)));
            const auto times = [alpha](int value) {
                return int(std::lround(double(value) * alpha / 255));
            };
            expectNear(colorOfFlat(convert(frame)),
                       {times(opaque.r), times(opaque.g), times(opaque.b), alpha});
        }
    }
}

/// A grey picture whose blue difference changes at half of its width or height.
HandmadeFrame chromaEdge(AVPixelFormat format, bool isUpright) {
    constexpr int size = 64;
    HandmadeFrame frame(format, size, size);
    frame.tags().colorspace = AVCOL_SPC_BT709;
    frame.fill(0, 126);
    frame.fill(2, 128);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    const int width = size >> description.log2_chroma_w;
    const int height = size >> description.log2_chroma_h;
    const QRect first = isUpright ? QRect(0, 0, width / 2, height) : QRect(0, 0, width, height / 2);
    const QRect second = isUpright ? QRect(width / 2, 0, width / 2, height)
                                   : QRect(0, height / 2, width, height / 2);
    frame.fill(1, first, 108);
    frame.fill(1, second, 148);
    return frame;
}

int blueAt(double cb) {
    return limitedOnPaper(bt709, {126, cb, 128}).b;
}

// Chroma sample k lies on luma column 2 k: column 30 is the last of the first colour, 32 the first
// of the second, and 31 lies halfway. Catmull-Rom has the weights -1, 9, 9, -1 of 16 there, and at
// column 29 they give 108 - 40 / 16.
TEST(PictureConverterTest, ChromaSitedLeftIsInterpolatedHalfwayBetweenItsSamples) {
    for (const AVChromaLocation location : {AVCHROMA_LOC_LEFT, AVCHROMA_LOC_UNSPECIFIED}) {
        HandmadeFrame frame = chromaEdge(AV_PIX_FMT_YUV420P, true);
        frame.tags().chroma_location = location;
        const QImage image = convert(frame);
        EXPECT_NEAR(storedAt(image, 30, 20).b, blueAt(108), tolerance);
        EXPECT_NEAR(storedAt(image, 31, 20).b, blueAt(128), tolerance);
        EXPECT_NEAR(storedAt(image, 32, 20).b, blueAt(148), tolerance);
        EXPECT_NEAR(storedAt(image, 29, 20).b, blueAt(105.5), tolerance);
        EXPECT_NEAR(storedAt(image, 10, 20).b, blueAt(108), tolerance);
    }
}

// Centred chroma sample k lies at luma 2 k + 1/2: 31 and 32 lie a quarter off samples 15 and 16.
// Catmull-Rom at 1/4: -0.0703, 0.8672, 0.2266, -0.0234, so 0.7969 of the one, 0.2031 of the other.
TEST(PictureConverterTest, ChromaSitedInTheCentreIsInterpolatedAtItsQuarters) {
    HandmadeFrame frame = chromaEdge(AV_PIX_FMT_YUV420P, true);
    frame.tags().chroma_location = AVCHROMA_LOC_CENTER;
    const QImage image = convert(frame);
    EXPECT_NEAR(storedAt(image, 31, 20).b, blueAt(108 + 0.2031 * 40), tolerance);
    EXPECT_NEAR(storedAt(image, 32, 20).b, blueAt(108 + 0.7969 * 40), tolerance);
}

// Vertically the samples of 4:2:0 lie between two rows also where they are sited left.
TEST(PictureConverterTest, ChromaIsInterpolatedBetweenRows) {
    const QImage image = convert(chromaEdge(AV_PIX_FMT_YUV420P, false));
    EXPECT_NEAR(storedAt(image, 20, 31).b, blueAt(108 + 0.2031 * 40), tolerance);
    EXPECT_NEAR(storedAt(image, 20, 32).b, blueAt(108 + 0.7969 * 40), tolerance);
    const QImage fullHeight = convert(chromaEdge(AV_PIX_FMT_YUV422P, false));
    EXPECT_NEAR(storedAt(fullHeight, 20, 31).b, blueAt(108), tolerance);
    EXPECT_NEAR(storedAt(fullHeight, 20, 32).b, blueAt(148), tolerance);
}

using Rgb = std::array<double, 3>;
using Primaries = std::array<Rgb, 3>;

// ITU-R BT.2087, and the same computed for P3 with D65 white.
constexpr Primaries bt2020To709 = {Rgb{1.660491, -0.587641, -0.072850},
                                   Rgb{-0.124550, 1.132900, -0.008349},
                                   Rgb{-0.018151, -0.100579, 1.118730}};
constexpr Primaries p3To709 = {Rgb{1.224940, -0.224940, 0}, Rgb{-0.042057, 1.042057, 0},
                               Rgb{-0.019638, -0.078636, 1.098274}};

/// Light by the display's gamma of 2.4 (ITU-R BT.1886), the primaries changed, and back.
Stored withPrimaries(const Primaries& matrix, const Stored& color) {
    constexpr double gamma = 2.4;
    const Rgb light = {std::pow(color.r / 255.0, gamma), std::pow(color.g / 255.0, gamma),
                       std::pow(color.b / 255.0, gamma)};
    std::array<int, 3> result{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double sum =
            matrix[i][0] * light[0] + matrix[i][1] * light[1] + matrix[i][2] * light[2];
        result[i] = byteOf(std::pow(std::max(sum, 0.0), 1 / gamma));
    }
    return {result[0], result[1], result[2], 255};
}

TEST(PictureConverterTest, DeclaredWidePrimariesAreBroughtToSrgb) {
    for (const Sample& sample : {Sample{126, 128, 128}, Sample{140, 120, 145},
                                 Sample{150, 110, 120}, Sample{110, 145, 125}}) {
        HandmadeFrame wide = flat(AV_PIX_FMT_YUV444P10, sample);
        wide.tags().colorspace = AVCOL_SPC_BT2020_NCL;
        wide.tags().color_primaries = AVCOL_PRI_BT2020;
        wide.tags().color_trc = AVCOL_TRC_BT2020_10;
        expectNear(colorOfFlat(convert(wide)),
                   withPrimaries(bt2020To709, limitedOnPaper(bt2020, sample)));
        HandmadeFrame p3 = flat(AV_PIX_FMT_YUV444P10, sample);
        p3.tags().colorspace = AVCOL_SPC_BT709;
        p3.tags().color_primaries = AVCOL_PRI_SMPTE432;
        expectNear(colorOfFlat(convert(p3)), withPrimaries(p3To709, limitedOnPaper(bt709, sample)));
    }
}

TEST(PictureConverterTest, OtherPrimariesAreShownAsTheyAre) {
    HandmadeFrame frame = flat(AV_PIX_FMT_YUV444P, telling);
    frame.tags().colorspace = AVCOL_SPC_SMPTE170M;
    frame.tags().color_primaries = AVCOL_PRI_SMPTE170M;
    frame.tags().color_trc = AVCOL_TRC_SMPTE170M;
    expectNear(colorOfFlat(convert(frame)), limitedOnPaper(bt601, telling));
}

TEST(PictureConverterTest, OddSizesKeepTheirLastRowAndColumn) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P10, AV_PIX_FMT_NV12}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        HandmadeFrame frame = flat(format, {64, 128, 128}, 321, 241);
        const int bright = 192 << (frame.depth() - 8);
        frame.set(0, 320, 240, bright);
        const QImage image = convert(frame);
        ASSERT_EQ(image.size(), QSize(321, 241));
        expectNear(storedAt(image, 320, 240), limitedOnPaper(bt601, {192, 128, 128}));
        expectNear(storedAt(image, 319, 240), limitedOnPaper(bt601, {64, 128, 128}));
        expectNear(storedAt(image, 320, 239), limitedOnPaper(bt601, {64, 128, 128}));
    }
}

TEST(PictureConverterTest, OddColouredSizesAreFlatToTheirEdges) {
    const HandmadeFrame frame = flat(AV_PIX_FMT_YUV420P, telling, 321, 241);
    expectNear(colorOfFlat(convert(frame)), limitedOnPaper(bt601, telling));
}

TEST(PictureConverterTest, OnePixelIsAPicture) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV420P, AV_PIX_FMT_GRAY8}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        const QImage image = convert(flat(format, {126, 128, 128}, 1, 1));
        EXPECT_EQ(image.size(), QSize(1, 1));
    }
}

/// True for formats that `HandmadeFrame` can draw and whose samples are integers of whole bytes.
bool canBeDrawn(const AVPixFmtDescriptor& format) {
    constexpr std::uint64_t others = AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL |
                                     AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT |
                                     AV_PIX_FMT_FLAG_PAL;
    const std::string name = format.name;
    return (format.flags & others) == 0 && format.comp[0].depth >= 8 && name.rfind("xyz", 0) != 0 &&
           name != "x2rgb10le" && name != "x2bgr10le" && name != "x2rgb10be" && name != "x2bgr10be";
}

/// Fills a frame with a grey of so much of white.
void fillGrey(HandmadeFrame& frame, const AVPixFmtDescriptor& format, double share) {
    const bool isRgb = (format.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    const bool hasAlpha = (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const bool isYuv = !isRgb && format.nb_components > 2;
    for (int component = 0; component < format.nb_components; ++component) {
        const int depth = format.comp[component].depth;
        const int largest = (1 << depth) - 1;
        double value = share * largest;
        if (hasAlpha && component == format.nb_components - 1)
            value = largest;
        else if (isYuv && component == 0)
            value = (16 + 219 * share) * (1 << (depth - 8));
        else if (isYuv)
            value = 1 << (depth - 1);
        frame.fill(component, int(std::lround(value)));
    }
}

TEST(PictureConverterTest, EveryFormatShowsGreyAsGrey) {
    int count = 0;
    const AVPixFmtDescriptor* format = nullptr;
    while ((format = av_pix_fmt_desc_next(format)) != nullptr) {
        const AVPixelFormat id = av_pix_fmt_desc_get_id(format);
        const bool isJpeg = std::string(format->name).rfind("yuvj", 0) == 0; // full range
        if (!canBeDrawn(*format) || isJpeg || sws_isSupportedInput(id) == 0)
            continue;
        SCOPED_TRACE(format->name);
        for (const int grey : {26, 128, 230}) {
            HandmadeFrame frame(id, 48, 32);
            fillGrey(frame, *format, grey / 255.0);
            expectNear(colorOfFlat(convert(frame)), {grey, grey, grey, 255});
        }
        ++count;
    }
    EXPECT_GT(count, 100);
}

TEST(PictureConverterTest, AFormatThatNothingUnpacksIsUnsupported) {
    av_log_set_level(AV_LOG_QUIET);
    libav::Frame raw = libav::makeFrame();
    raw->format = AV_PIX_FMT_VAAPI; // lies on an accelerator
    raw->width = 64;
    raw->height = 48;
    const VideoFrame frame(std::move(raw), {});
    try {
        (void)PictureConverter().convert(frame);
        ADD_FAILURE() << "converted";
    } catch (const MediaError& error) {
        EXPECT_EQ(error.category(), MediaError::Category::Unsupported);
    }
}

TEST(PictureConverterTest, OneConverterTakesFramesOfChangingKinds) {
    PictureConverter converter;
    const HandmadeFrame small = flat(AV_PIX_FMT_YUV420P, telling);
    const HandmadeFrame large = flat(AV_PIX_FMT_YUV444P10, {126, 100, 140}, 96, 80);
    const QImage first = converter.convert(small.video());
    const QImage second = converter.convert(large.video());
    EXPECT_EQ(converter.convert(small.video()), first);
    EXPECT_EQ(converter.convert(large.video()), second);
    EXPECT_EQ(first, convert(small));
    EXPECT_EQ(second, convert(large));
}

} // namespace

} // namespace stillwick::testing
