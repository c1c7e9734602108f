#include "Stillwick/ImageFilterService.h"

#include <gtest/gtest.h>

#include <QColorSpace>

#include <opencv2/core.hpp>

#include <cmath>
#include <cstdint>
#include <thread>
#include <vector>

namespace stillwick {

namespace {

constexpr std::array drawnStyles{FilterStyle::sketch, FilterStyle::comic, FilterStyle::poster};

/// A coloured, textured disc with a soft edge; hidden pixels have the given colour.
QImage softDisc(QSize size, QRgb hidden = 0) {
    QImage image(size, QImage::Format_RGBA8888);
    std::uint32_t random = 1;
    const double radius = 0.4 * size.height();
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            random = random * 1664525U + 1013904223U;
            const double toEdge = radius - std::hypot(x - size.width() / 2, y - size.height() / 2);
            const int alpha = int(qBound(0.0, 128 + 40 * toEdge, 255.0));
            const int wave = int(100 + 80 * std::sin(x / 9.0) * std::cos(y / 7.0));
            image.setPixel(x, y,
                           alpha == 0
                               ? hidden & 0xffffffU
                               : qRgba(wave + int(random >> 28), 255 - wave, y % 256, alpha));
        }
    return image;
}

std::vector<int> alphasOf(const QImage& image) {
    std::vector<int> alphas;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            alphas.push_back(qAlpha(image.pixel(x, y)));
    return alphas;
}

class ImageFilterServiceTest : public testing::Test {
protected:
    void TearDown() override { cv::setNumThreads(-1); }

    ImageFilterService m_service;
};

TEST_F(ImageFilterServiceTest, NoneReturnsTheVeryInput) {
    const QImage image = softDisc({20, 20}).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(m_service.apply(FilterStyle::none, image).cacheKey(), image.cacheKey());
}

TEST_F(ImageFilterServiceTest, AnEmptyPictureComesBackEmptyInEveryStyle) {
    for (const FilterStyle style : allFilterStyles)
        EXPECT_TRUE(m_service.apply(style, {}).isNull());
}

TEST_F(ImageFilterServiceTest, AFullyTransparentPictureStaysFullyTransparent) {
    QImage image(30, 20, QImage::Format_RGBA8888);
    image.fill(QColor(200, 100, 50, 0));
    for (const FilterStyle style : drawnStyles) {
        const QImage result = m_service.apply(style, image);
        ASSERT_EQ(result.size(), image.size());
        for (int y = 0; y < 20; ++y)
            for (int i = 0; i < 4 * 30; ++i)
                ASSERT_EQ(result.constScanLine(y)[i], 0);
    }
}

TEST_F(ImageFilterServiceTest, TheAlphaStaysToTheBitAndNothingIsLeftWhereItIsZero) {
    const QImage image = softDisc({90, 80}, qRgb(255, 0, 255));
    for (const FilterStyle style : drawnStyles) {
        const QImage result = m_service.apply(style, image);
        EXPECT_EQ(result.format(), QImage::Format_RGBA8888);
        EXPECT_EQ(alphasOf(result), alphasOf(image));
        EXPECT_EQ(result.pixel(0, 0), 0U);
        EXPECT_NE(result, image);
    }
}

TEST_F(ImageFilterServiceTest, HiddenColoursDoNotMatter) {
    const QImage black = softDisc({90, 80}, qRgb(0, 0, 0));
    const QImage white = softDisc({90, 80}, qRgb(255, 255, 255));
    ASSERT_NE(black.constScanLine(0)[0], white.constScanLine(0)[0]);
    for (const FilterStyle style : drawnStyles)
        EXPECT_EQ(m_service.apply(style, black), m_service.apply(style, white));
}

TEST_F(ImageFilterServiceTest, HowMuchEmptinessSurroundsTheSubjectDoesNotMatter) {
    const QImage wide = softDisc({200, 80});
    const QRect part(41, 3, 120, 75);
    for (const FilterStyle style : drawnStyles)
        EXPECT_EQ(m_service.apply(style, wide.copy(part)), m_service.apply(style, wide).copy(part));
}

TEST_F(ImageFilterServiceTest, TheNumberOfThreadsDoesNotMatter) {
    const QImage image = softDisc({1400, 1200}); // large enough to be drawn coarser
    for (const FilterStyle style : drawnStyles) {
        cv::setNumThreads(1);
        const QImage alone = m_service.apply(style, image);
        for (const int threads : {2, 4}) {
            cv::setNumThreads(threads);
            EXPECT_EQ(m_service.apply(style, image), alone) << threads;
        }
    }
}

TEST_F(ImageFilterServiceTest, ThreadsThatShareOneServiceGetWhatOneAloneGets) {
    const QImage image = softDisc({150, 120});
    for (const FilterStyle style : drawnStyles) {
        const QImage alone = m_service.apply(style, image);
        std::vector<QImage> results(4);
        {
            std::vector<std::jthread> threads;
            for (QImage& result : results)
                threads.emplace_back([&] { result = m_service.apply(style, image); });
        }
        for (const QImage& result : results)
            EXPECT_EQ(result, alone);
    }
}

TEST_F(ImageFilterServiceTest, TheColourSpaceStaysAndSoDoesThePictureGiven) {
    QImage image = softDisc({40, 30});
    image.setColorSpace(QColorSpace::DisplayP3);
    const QImage before = image.copy();
    for (const FilterStyle style : drawnStyles)
        EXPECT_EQ(m_service.apply(style, image).colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    EXPECT_EQ(image, before);
}

TEST_F(ImageFilterServiceTest, TheSmallestPicturesAreDrawnToo) {
    for (const QSize size :
         {QSize(1, 1), QSize(1, 50), QSize(50, 1), QSize(2, 2), QSize(3, 1000)}) {
        QImage image(size, QImage::Format_RGBA8888);
        image.fill(QColor(60, 130, 200, 254));
        for (const FilterStyle style : drawnStyles) {
            const QImage result = m_service.apply(style, image);
            EXPECT_EQ(result.size(), size);
            EXPECT_EQ(qAlpha(result.pixel(0, 0)), 254);
            EXPECT_NE(result.cacheKey(), image.cacheKey());
        }
        // 60, 130 and 200 are nearest to 51, 153 and 204.
        EXPECT_EQ(m_service.apply(FilterStyle::poster, image).pixel(0, 0),
                  qRgba(51, 153, 204, 254));
    }
}

TEST_F(ImageFilterServiceTest, PremultipliedColoursAreTakenForWhatTheyMean) {
    QImage image(8, 8, QImage::Format_RGBA8888_Premultiplied);
    image.fill(QColor(0, 0, 0, 0));
    // Half of (200, 100, 60): straight, the levels are 204, 102 and 51.
    image.setPixel(4, 4, qRgba(100, 50, 30, 128));
    const uchar* pixel = image.constScanLine(4) + 16;
    ASSERT_EQ(pixel[0], 100);
    EXPECT_EQ(m_service.apply(FilterStyle::poster, image).pixel(4, 4), qRgba(204, 102, 51, 128));
}

TEST_F(ImageFilterServiceTest, EveryFormatIsAccepted) {
    QImage base(16, 16, QImage::Format_RGBA8888);
    base.fill(QColor(250, 250, 250));
    for (int format = QImage::Format_Mono; format < QImage::NImageFormats; ++format) {
        const QImage image = base.convertToFormat(QImage::Format(format));
        if (image.format() == QImage::Format_Alpha8)
            continue; // holds no colour
        ASSERT_FALSE(image.isNull()) << format;
        const QImage result = m_service.apply(FilterStyle::poster, image);
        EXPECT_EQ(result.format(), QImage::Format_RGBA8888) << format;
        EXPECT_EQ(result.pixel(8, 8), qRgb(255, 255, 255)) << format;
        EXPECT_EQ(m_service.apply(FilterStyle::sketch, image).size(), image.size()) << format;
        EXPECT_EQ(m_service.apply(FilterStyle::comic, image).size(), image.size()) << format;
    }
}

TEST_F(ImageFilterServiceTest, APictureTooWideToBeDrawnComesBackAsItIs) {
    const QImage image(600'000'000, 1, QImage::Format_Mono); // no 32-bit picture can be so wide
    ASSERT_FALSE(image.isNull());
    for (const FilterStyle style : drawnStyles)
        EXPECT_EQ(m_service.apply(style, image).cacheKey(), image.cacheKey());
}

} // namespace

} // namespace stillwick
