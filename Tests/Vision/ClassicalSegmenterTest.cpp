// The method without a network on drawn pictures, whose subjects are known.
#include "Vision/ClassicalSegmenter.h"

#include "DrawnPictures.h"

#include <gtest/gtest.h>

namespace stillwick {
namespace {

TEST(ClassicalSegmenterTest, ADiscOnGrassIsFound) {
    const Disc disc{{176, 100}, 60, QColor(200, 40, 50)};
    const QImage picture = discsOnGrass({320, 200}, {disc});
    const Foreground found = ClassicalSegmenter().segment(picture, {});
    EXPECT_EQ(found.instanceCount, 1);
    int wrong = 0;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 320; ++x)
            wrong += (found.alpha.constScanLine(y)[x] >= 128) != disc.contains(x, y) ? 1 : 0;
    EXPECT_LT(wrong, 320 * 200 / 100);
}

class PlainPictureTest : public testing::TestWithParam<std::size_t> {};

TEST_P(PlainPictureTest, ShowsNoSubject) {
    const PlainPicture plain = simplePictures().at(GetParam());
    EXPECT_EQ(ClassicalSegmenter().segment(plain.picture, {}).instanceCount, 0)
        << plain.name.toStdString();
}

INSTANTIATE_TEST_SUITE_P(AllPlain, PlainPictureTest,
                         testing::Range(std::size_t{0}, simplePictures().size()));

} // namespace
} // namespace stillwick
