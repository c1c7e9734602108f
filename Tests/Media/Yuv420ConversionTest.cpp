#include "HandmadeFrame.h"

#include "Media/PlaneConversion.h"
#include "Media/Yuv420Conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace stillwick::testing {

namespace {

struct Case {
    std::string name;
    AVPixelFormat format = AV_PIX_FMT_YUV420P;
    AVColorSpace matrix = AVCOL_SPC_BT709;
    double red = 0.2126; ///< share in luma
    double blue = 0.0722;
    bool isFullRange = false;
    int width = 64;
    int height = 48;
};

std::ostream& operator<<(std::ostream& stream, const Case& c) {
    return stream << c.name;
}

/// Samples of all values, also those that no real picture has.
HandmadeFrame noise(const Case& c) {
    HandmadeFrame frame(c.format, c.width, c.height);
    std::mt19937 random(11);
    std::uniform_int_distribution<int> value(0, (1 << frame.depth()) - 1);
    for (int component = 0; component < 3; ++component) {
        const int shift = component == 0 ? 0 : 1;
        for (int y = 0; y < AV_CEIL_RSHIFT(c.height, shift); ++y) {
            for (int x = 0; x < AV_CEIL_RSHIFT(c.width, shift); ++x)
                frame.set(component, x, y, value(random));
        }
    }
    return frame;
}

ColorDescription colorFor(const Case& c) {
    ColorDescription color;
    color.matrix = c.matrix;
    color.isFullRange = c.isFullRange;
    return color;
}

/// The picture as planes, and what they mean.
struct Source {
    PlanarPicture picture;
    PlaneFormat format;
};

Source sourceFor(const Case& c, const HandmadeFrame& frame) {
    const VideoFrame video = frame.video();
    PlanarPicture picture = PlanarPicture::of(video.avFrame());
    const PlaneFormat format = PlaneFormat::of(picture, video.avFrame(), colorFor(c));
    return {std::move(picture), format};
}

QImage converted(const Case& c, const HandmadeFrame& frame) {
    const Source source = sourceFor(c, frame);
    EXPECT_TRUE(Yuv420Conversion::isFor(source.format));
    QImage image(c.width, c.height, QImage::Format_RGBA8888_Premultiplied);
    Yuv420Conversion(source.format)
        .convert(source.picture, c.width, c.height, image.bits(), image.bytesPerLine());
    return image;
}

/// The cubic of Catmull and Rom, as published.
double cubic(double distance) {
    const double d = std::abs(distance);
    if (d < 1)
        return 1.5 * d * d * d - 2.5 * d * d + 1;
    return d < 2 ? -0.5 * d * d * d + 2.5 * d * d - 4 * d + 2 : 0;
}

int mirrored(int i, int count) {
    const int inside = i < 0 ? -1 - i : i >= count ? 2 * count - 1 - i : i;
    return std::clamp(inside, 0, count - 1);
}

double sampleAt(const PlanarPicture& picture, int plane, int x, int y) {
    const std::uint8_t* row = picture.row(plane, y);
    if (picture.layout().bytesPerSample == 1)
        return row[x];
    return reinterpret_cast<const std::uint16_t*>(row)[x];
}

/// Chroma at a luma sample's place, by the two-dimensional sum itself.
double chromaAt(const PlanarPicture& picture, int plane, int x, int y) {
    const double column = x / 2.0;
    const double row = (y - 0.5) / 2;
    double sum = 0;
    for (int j = int(std::floor(row)) - 1; j <= int(std::floor(row)) + 2; ++j) {
        for (int i = int(std::floor(column)) - 1; i <= int(std::floor(column)) + 2; ++i)
            sum += cubic(row - j) * cubic(column - i) *
                   sampleAt(picture, plane, mirrored(i, picture.layout().widthOf(plane)),
                            mirrored(j, picture.layout().heightOf(plane)));
    }
    return sum;
}

/// R, G and B from 0 to 255, before they are rounded.
std::array<double, 3> onPaper(const Case& c, const Source& source, int x, int y) {
    const int depth = source.format.depth;
    const double step = 1 << (depth - 8);
    const double white = (1 << depth) - 1;
    const double luma = c.isFullRange ? sampleAt(source.picture, 0, x, y) / white
                                      : (sampleAt(source.picture, 0, x, y) / step - 16) / 219;
    const auto difference = [&](int plane) {
        const double value = chromaAt(source.picture, plane, x, y) - 128 * step;
        return c.isFullRange ? value / white : value / step / 224;
    };
    const double r = luma + 2 * (1 - c.red) * difference(2);
    const double b = luma + 2 * (1 - c.blue) * difference(1);
    const double g = (luma - c.red * r - c.blue * b) / (1 - c.red - c.blue);
    return {255 * std::clamp(r, 0.0, 1.0), 255 * std::clamp(g, 0.0, 1.0),
            255 * std::clamp(b, 0.0, 1.0)};
}

class EveryFormatTest : public ::testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        if (!hasFastYuv420Rows())
            GTEST_SKIP() << "this machine converts by the general way";
    }
};

TEST_P(EveryFormatTest, EverySampleIsTheTextbooksRounded) {
    const HandmadeFrame frame = noise(GetParam());
    const QImage image = converted(GetParam(), frame);
    const Source source = sourceFor(GetParam(), frame);
    // Sums of seven digits: only what is as near as this to a half may round to either side.
    constexpr double precision = 1e-3;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const Stored color = storedAt(image, x, y);
            const std::array<double, 3> expected = onPaper(GetParam(), source, x, y);
            ASSERT_LE(std::abs(color.r - expected[0]), 0.5 + precision) << "red " << x << ", " << y;
            ASSERT_LE(std::abs(color.g - expected[1]), 0.5 + precision)
                << "green " << x << ' ' << y;
            ASSERT_LE(std::abs(color.b - expected[2]), 0.5 + precision)
                << "blue " << x << ", " << y;
            ASSERT_EQ(color.a, 255);
        }
    }
}

TEST_P(EveryFormatTest, TheGeneralConversionAgreesButForRounding) {
    const HandmadeFrame frame = noise(GetParam());
    const Source source = sourceFor(GetParam(), frame);
    const PlaneFormat to =
        PlaneFormat::rgb(source.format.layout.width, source.format.layout.height, false);
    const PlanarPicture rgb(to.layout);
    PlaneConversion(source.format, to, 1).convert(source.picture, rgb);
    const QImage image = converted(GetParam(), frame);
    int different = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const PlanarPicture::Row row = rgb.rowsAt(y);
            const int levels = distance(storedAt(image, x, y), {row[0][x], row[1][x], row[2][x]});
            ASSERT_LE(levels, 1) << x << ", " << y;
            different += levels;
        }
    }
    EXPECT_LE(different, image.width() * image.height() / 1000); // measured: none
}

std::string nameOf(const ::testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Yuv420ConversionTest, EveryFormatTest,
    ::testing::Values(
        Case{"Bt709"}, Case{"Bt601", AV_PIX_FMT_YUV420P, AVCOL_SPC_SMPTE170M, 0.299, 0.114},
        Case{"Bt2020", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593},
        Case{"FullRange", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT470BG, 0.299, 0.114, true},
        Case{"TenBits", AV_PIX_FMT_YUV420P10},
        Case{"TenBitsFullRange", AV_PIX_FMT_YUV420P10, AVCOL_SPC_BT709, 0.2126, 0.0722, true},
        Case{"TwelveBits", AV_PIX_FMT_YUV420P12},
        // What is left over behind the last vector of sixteen pixels, and less than one.
        Case{"Width78", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, 0.2126, 0.0722, false, 78, 10},
        Case{"Width46TenBits", AV_PIX_FMT_YUV420P10, AVCOL_SPC_BT709, 0.2126, 0.0722, false, 46, 6},
        Case{"OddSize", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, 0.2126, 0.0722, false, 49, 31},
        Case{"Narrow", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, 0.2126, 0.0722, false, 4, 4},
        Case{"OneSampleOfChroma", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, 0.2126, 0.0722, false, 2,
             2}),
    nameOf);

TEST(Yuv420ConversionTest, WhatNeedsMoreThanAMatrixIsLeftToTheGeneralConversion) {
    const auto isFor = [](AVPixelFormat pixels, const ColorDescription& color) {
        const VideoFrame frame = HandmadeFrame(pixels, 64, 48).video();
        return Yuv420Conversion::isFor(
            PlaneFormat::of(PlanarPicture::of(frame.avFrame()), frame.avFrame(), color));
    };
    EXPECT_EQ(isFor(AV_PIX_FMT_YUV420P, {}), hasFastYuv420Rows());
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV440P, AV_PIX_FMT_YUV444P,
                                       AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUV420P14, AV_PIX_FMT_GRAY8})
        EXPECT_FALSE(isFor(format, {})) << av_get_pix_fmt_name(format);
    ColorDescription color;
    color.chromaLocation = AVCHROMA_LOC_CENTER;
    EXPECT_FALSE(isFor(AV_PIX_FMT_YUV420P, color)) << "chroma elsewhere";
    color = {};
    color.primaries = AVCOL_PRI_BT2020;
    EXPECT_FALSE(isFor(AV_PIX_FMT_YUV420P, color)) << "other primaries";
    color = {};
    color.transfer = AVCOL_TRC_SMPTE2084;
    EXPECT_FALSE(isFor(AV_PIX_FMT_YUV420P10, color)) << "another transfer";
    color = {};
    color.matrix = AVCOL_SPC_YCGCO;
    EXPECT_FALSE(isFor(AV_PIX_FMT_YUV420P, color)) << "no matrix of luma and differences";
    PlaneFormat field;
    field.layout.chromaShiftX = field.layout.chromaShiftY = 1;
    EXPECT_EQ(Yuv420Conversion::isFor(field), hasFastYuv420Rows());
    field.rows = PlaneFormat::Rows::TopField;
    EXPECT_FALSE(Yuv420Conversion::isFor(field)) << "the rows of one field";
}

} // namespace

} // namespace stillwick::testing
