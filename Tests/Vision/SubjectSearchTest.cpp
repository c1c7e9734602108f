// The standard segmenter on drawn pictures, whose subjects are known because the test drew them.
#include "DrawnPictures.h"
#include "Vision/GenerateForegroundInstanceMaskRequest.h"
#include "Vision/ImageRequestHandler.h"
#include "Vision/VisionError.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <thread>

namespace stillwick {
namespace {

Foreground searched(const QImage& picture) {
    return standardSegmenter()->segment(
        picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied), {});
}

const QColor red(200, 40, 50);
const QColor blue(40, 60, 190);

// Intersection over union of what is at least half opaque with the union of the discs.
double overlap(const Foreground& found, const std::vector<Disc>& discs) {
    int both = 0;
    int either = 0;
    for (int y = 0; y < found.alpha.height(); ++y)
        for (int x = 0; x < found.alpha.width(); ++x) {
            const bool drawn = std::any_of(discs.begin(), discs.end(), [x, y](const Disc& disc) {
                return disc.contains(x, y);
            });
            const bool seen = found.alpha.constScanLine(y)[x] >= 128;
            both += drawn && seen ? 1 : 0;
            either += drawn || seen ? 1 : 0;
        }
    return either == 0 ? 1 : static_cast<double>(both) / either;
}

int labelAt(const Foreground& found, QPointF point) {
    return found.labels.constScanLine(static_cast<int>(point.y()))[static_cast<int>(point.x())];
}

// Whatever the picture: sizes match, and a pixel has a label where it is visible and only there.
void expectSound(const Foreground& found, QSize size) {
    ASSERT_EQ(found.alpha.size(), size);
    ASSERT_EQ(found.labels.size(), size);
    std::vector<int> pixels(256, 0);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            const int label = found.labels.constScanLine(y)[x];
            ASSERT_EQ(label > 0, found.alpha.constScanLine(y)[x] > 0) << x << ' ' << y;
            ASSERT_LE(label, found.instanceCount);
            ++pixels[static_cast<std::size_t>(label)];
        }
    for (int i = 1; i <= found.instanceCount; ++i)
        EXPECT_GT(pixels[static_cast<std::size_t>(i)], 0) << i;
}

// The drawn edge is one pixel sharp, so nearly all of the overlap must be there at any size.
TEST(SubjectSearchTest, ADiscOnGrassIsFoundWhole) {
    for (const QSize size : {QSize(160, 100), QSize(321, 243), QSize(1280, 720)}) {
        const Disc disc{{size.width() * .55, size.height() * .5}, size.height() * .3, red};
        const Foreground found = searched(discsOnGrass(size, {disc}));
        expectSound(found, size);
        EXPECT_EQ(found.instanceCount, 1);
        EXPECT_GT(overlap(found, {disc}), .96) << size.width();
    }
}

TEST(SubjectSearchTest, AnUprightPictureIsNoDifferent) {
    const Disc disc{{100, 200}, 60, blue};
    const Foreground found = searched(discsOnGrass({200, 400}, {disc}));
    EXPECT_EQ(found.instanceCount, 1);
    EXPECT_GT(overlap(found, {disc}), .96);
}

TEST(SubjectSearchTest, AGreyDiscOnADarkerWallIsFound) {
    const Disc disc{{160, 100}, 50, {}};
    const QImage picture = painted({320, 200}, [&disc](int x, int y) {
        return disc.contains(x, y) ? QColor(190, 190, 190) : QColor(60, 60, 60);
    });
    EXPECT_GT(overlap(searched(picture), {disc}), .96);
}

TEST(SubjectSearchTest, TwoDiscsApartAreTwoInstancesFromLeftToRight) {
    const Disc left{{110, 130}, 50, blue};
    const Disc right{{290, 110}, 60, red};
    const Foreground found = searched(discsOnGrass({400, 240}, {right, left}));
    ASSERT_EQ(found.instanceCount, 2);
    EXPECT_EQ(labelAt(found, left.middle), 1);
    EXPECT_EQ(labelAt(found, right.middle), 2);
    EXPECT_GT(overlap(found, {left, right}), .96);
}

TEST(SubjectSearchTest, TouchingDiscsAreTwoInstances) {
    const Disc left{{150, 120}, 55, red};
    const Disc right{{250, 120}, 55, red};
    const Foreground found = searched(discsOnGrass({400, 240}, {left, right}));
    ASSERT_EQ(found.instanceCount, 2);
    EXPECT_EQ(labelAt(found, left.middle), 1);
    EXPECT_EQ(labelAt(found, right.middle), 2);
    EXPECT_GT(overlap(found, {left, right}), .96);
}

// Of walls, textures and skies at most one in twenty may be taken for a subject.
TEST(SubjectSearchTest, PicturesWithoutSubjectShowNone) {
    const std::vector<PlainPicture> pictures = picturesWithoutSubject();
    ASSERT_GE(pictures.size(), 60U);
    QStringList wrong;
    for (const PlainPicture& plain : pictures) {
        const Foreground found = searched(plain.picture);
        expectSound(found, plain.picture.size());
        if (found.instanceCount > 0)
            wrong.append(plain.name);
    }
    EXPECT_LE(wrong.size(), static_cast<qsizetype>(pictures.size() / 20))
        << wrong.join(QStringLiteral(", ")).toStdString();
}

TEST(SubjectSearchTest, TinyAndNarrowPicturesAreAnswered) {
    for (const QSize size : {QSize(1, 1), QSize(1, 40), QSize(40, 1), QSize(3, 3), QSize(7, 9),
                             QSize(8, 8), QSize(9, 17), QSize(2000, 9), QSize(33, 1001)}) {
        const Disc disc{{size.width() / 2.0, size.height() / 2.0},
                        std::min(size.width(), size.height()) / 3.0,
                        red};
        expectSound(searched(discsOnGrass(size, {disc})), size);
        expectSound(searched(painted(size, [](int, int) { return red; })), size);
    }
}

TEST(SubjectSearchTest, TheSameAnswerComesFromAnyNumberOfThreads) {
    const Disc disc{{600, 300}, 150, red};
    const QImage picture = discsOnGrass({1000, 600}, {disc, {{250, 350}, 100, blue}});
    const int before = cv::getNumThreads();
    const Foreground expected = searched(picture);
    EXPECT_EQ(expected.instanceCount, 2);
    for (const int threads : {1, 2, 8}) {
        cv::setNumThreads(threads);
        const Foreground found = searched(picture);
        EXPECT_EQ(found.alpha, expected.alpha) << threads;
        EXPECT_EQ(found.labels, expected.labels) << threads;
    }
    cv::setNumThreads(before);
}

TEST(SubjectSearchTest, SearchesAtTheSameTimeDoNotDisturbEachOther) {
    const QImage picture = discsOnGrass({320, 200}, {{{160, 100}, 50, red}});
    const Foreground expected = searched(picture);
    std::vector<Foreground> found(4);
    {
        std::vector<std::jthread> threads;
        for (Foreground& place : found)
            threads.emplace_back([&place, &picture] { place = searched(picture); });
    }
    for (const Foreground& answer : found)
        EXPECT_EQ(answer.alpha, expected.alpha);
}

// The band of the edge is a few working pixels wide; a working pixel of this picture is 4 of its
// own.
TEST(SubjectSearchTest, PixelsWellInsideAreUntouchedAndThoseFarOutsideGone) {
    const Disc disc{{640, 360}, 200, red};
    const QImage picture = discsOnGrass({1280, 720}, {disc});
    const ImageRequestHandler handler(picture);
    GenerateForegroundInstanceMaskRequest request;
    handler.perform(request);
    ASSERT_EQ(request.results().size(), 1U);
    const InstanceMaskObservation& observation = request.results().front();
    const QImage cutOut = observation.generateMaskedImage(observation.allInstances(), handler,
                                                          MaskedImageExtent::WholePicture);
    for (int y = 0; y < 720; ++y)
        for (int x = 0; x < 1280; ++x) {
            const double distance = std::hypot(x + .5 - 640, y + .5 - 360);
            if (std::abs(distance - 200) <= 16)
                continue;
            ASSERT_EQ(cutOut.pixel(x, y), distance < 200 ? picture.pixel(x, y) : 0U)
                << x << ' ' << y;
        }
}

TEST(SubjectSearchTest, TheInstancesTogetherAreTheMergedCutOut) {
    const QImage picture = discsOnGrass({500, 300}, {{{170, 150}, 80, red}, {{310, 150}, 75, red}});
    const ImageRequestHandler handler(picture);
    GenerateForegroundInstanceMaskRequest request;
    handler.perform(request);
    ASSERT_EQ(request.results().size(), 1U);
    const InstanceMaskObservation& observation = request.results().front();
    ASSERT_EQ(observation.allInstances().size(), 2U);
    const auto cutOut = [&](std::span<const int> instances) {
        return observation.generateMaskedImage(instances, handler, MaskedImageExtent::WholePicture);
    };
    const QImage merged = cutOut(observation.allInstances());
    const QImage first = cutOut(std::array{1});
    const QImage second = cutOut(std::array{2});
    for (int y = 0; y < 300; ++y)
        for (int i = 0; i < 4 * 500; ++i)
            ASSERT_EQ(merged.constScanLine(y)[i],
                      first.constScanLine(y)[i] + second.constScanLine(y)[i]);
}

TEST(SubjectSearchTest, TransparentPixelsAreNeverSubject) {
    const Disc disc{{160, 100}, 60, red};
    QImage picture = discsOnGrass({320, 200}, {disc});
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 160; ++x)
            picture.setPixelColor(x, y, Qt::transparent);
    const Foreground found = searched(picture);
    expectSound(found, picture.size());
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 160; ++x)
            ASSERT_EQ(found.alpha.constScanLine(y)[x], 0);
}

TEST(SubjectSearchTest, AnOpaqueDiscOnNothingIsTheSubject) {
    const Disc disc{{160, 100}, 60, red};
    QImage picture = painted({320, 200}, [&disc](int x, int y) {
        return disc.contains(x, y) ? red : QColor(Qt::transparent);
    });
    EXPECT_GT(overlap(searched(picture), {disc}), .96);
}

TEST(SubjectSearchTest, AVeryLargePictureIsAnswered) {
    const Disc disc{{4000, 2200}, 1300, red};
    QImage picture(7680, 4320, QImage::Format_RGBA8888_Premultiplied);
    picture.fill(QColor(90, 140, 75));
    for (int y = 900; y < 3501; ++y)
        for (int x = 2700; x < 5301; ++x)
            if (disc.contains(x, y))
                picture.setPixelColor(x, y, red);
    const Foreground found = searched(picture);
    EXPECT_EQ(found.instanceCount, 1);
    EXPECT_GT(overlap(found, {disc}), .96);
}

TEST(SubjectSearchTest, AWithdrawnSearchEndsInCancelled) {
    const QImage picture = discsOnGrass({1280, 720}, {{{640, 360}, 200, red}});
    std::stop_source source;
    source.request_stop();
    try {
        static_cast<void>(standardSegmenter()->segment(picture, source.get_token()));
        FAIL() << "nothing was thrown";
    } catch (const VisionError& error) {
        EXPECT_EQ(error.category(), VisionError::Category::Cancelled);
    }
}

} // namespace
} // namespace stillwick
