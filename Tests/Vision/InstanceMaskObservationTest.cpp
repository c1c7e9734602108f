#include "DrawnPictures.h"
#include "Vision/GenerateForegroundInstanceMaskRequest.h"
#include "Vision/ImageRequestHandler.h"
#include "Vision/VisionError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QColorSpace>

#include <array>

namespace stillwick {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Finds what it is told to.
class ToldSegmenter final : public ForegroundSegmenter {
public:
    explicit ToldSegmenter(Foreground answer) : m_answer(std::move(answer)) {}
    [[nodiscard]] Foreground segment(const QImage&, std::stop_token) const override {
        return m_answer;
    }

private:
    Foreground m_answer;
};

QImage grey(const std::vector<std::vector<uchar>>& rows) {
    QImage image(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()),
                 QImage::Format_Grayscale8);
    for (int y = 0; y < image.height(); ++y)
        std::copy(rows[static_cast<std::size_t>(y)].begin(),
                  rows[static_cast<std::size_t>(y)].end(), image.scanLine(y));
    return image;
}

// Instance 1 on the left, 2 on the right, each with a half transparent pixel.
Foreground twoInstances() {
    return {grey({{0, 255, 0, 0, 0}, {0, 128, 0, 255, 128}, {0, 0, 0, 0, 0}}),
            grey({{0, 1, 0, 0, 0}, {0, 1, 0, 2, 2}, {0, 0, 0, 0, 0}}), 2};
}

const QColor orange(200, 100, 40);

class InstanceMaskObservationTest : public testing::Test {
protected:
    ImageRequestHandler handler{painted({5, 3}, [](int, int) { return orange; })};
    InstanceMaskObservation observation{twoInstances()};
    static constexpr std::array<int, 2> both{1, 2};
    static constexpr std::array<int, 1> first{1};
    static constexpr std::array<int, 1> second{2};

    VisionError::Category failureOf(std::span<const int> instances,
                                    const ImageRequestHandler& other) const {
        try {
            static_cast<void>(
                observation.generateMaskedImage(instances, other, MaskedImageExtent::WholePicture));
        } catch (const VisionError& error) {
            return error.category();
        }
        ADD_FAILURE() << "nothing was thrown";
        return {};
    }
};

TEST_F(InstanceMaskObservationTest, InstancesAscendFromOne) {
    EXPECT_THAT(observation.allInstances(), ElementsAre(1, 2));
}

TEST_F(InstanceMaskObservationTest, APixelInsideIsThePicturesOwnAndOneOutsideIsTransparent) {
    const QImage image =
        observation.generateMaskedImage(both, handler, MaskedImageExtent::WholePicture);
    EXPECT_EQ(image.format(), QImage::Format_RGBA8888);
    EXPECT_EQ(image.size(), QSize(5, 3));
    EXPECT_EQ(image.colorSpace(), QColorSpace(QColorSpace::SRgb));
    EXPECT_EQ(image.pixelColor(1, 0), orange);
    EXPECT_EQ(image.pixelColor(3, 1), orange);
    EXPECT_EQ(image.pixel(0, 0), 0U);
}

TEST_F(InstanceMaskObservationTest, AnEdgePixelKeepsItsColourToTheBit) {
    const QImage image =
        observation.generateMaskedImage(both, handler, MaskedImageExtent::WholePicture);
    const uchar* pixel = image.constScanLine(1) + 4 * 1;
    EXPECT_EQ(pixel[0], orange.red());
    EXPECT_EQ(pixel[1], orange.green());
    EXPECT_EQ(pixel[2], orange.blue());
    EXPECT_EQ(pixel[3], 128);
}

TEST_F(InstanceMaskObservationTest, ASoftPixelTakesTheColourOfTheSubjectAlone) {
    Foreground foreground = twoInstances();
    foreground.edgeColours = {{QPoint(1, 1), {1, 2, 3}}, {QPoint(4, 1), {4, 5, 6}}};
    const InstanceMaskObservation coloured(foreground);
    const QImage whole =
        coloured.generateMaskedImage(both, handler, MaskedImageExtent::WholePicture);
    EXPECT_EQ(whole.pixelColor(1, 1), QColor(1, 2, 3, 128));
    EXPECT_EQ(whole.pixelColor(4, 1), QColor(4, 5, 6, 128));
    EXPECT_EQ(whole.pixelColor(1, 0), orange);
    const QImage cropped =
        coloured.generateMaskedImage(second, handler, MaskedImageExtent::CroppedToInstances);
    EXPECT_EQ(cropped.pixelColor(0, 0), orange);
    EXPECT_EQ(cropped.pixelColor(1, 0), QColor(4, 5, 6, 128));
    const QImage one =
        coloured.generateMaskedImage(second, handler, MaskedImageExtent::WholePicture);
    EXPECT_EQ(one.pixel(1, 1), 0U);
}

TEST_F(InstanceMaskObservationTest, OneInstanceShowsOnlyItself) {
    const QImage image =
        observation.generateMaskedImage(second, handler, MaskedImageExtent::WholePicture);
    EXPECT_EQ(image.pixel(1, 0), 0U);
    EXPECT_EQ(image.pixelColor(3, 1), orange);
}

TEST_F(InstanceMaskObservationTest, CroppingHoldsEveryPixelOfTheInstancesAndNoMore) {
    const auto sizeOf = [this](std::span<const int> instances) {
        return observation
            .generateMaskedImage(instances, handler, MaskedImageExtent::CroppedToInstances)
            .size();
    };
    EXPECT_EQ(sizeOf(both), QSize(4, 2));
    EXPECT_EQ(sizeOf(first), QSize(1, 2));
    EXPECT_EQ(sizeOf(second), QSize(2, 1));
    const QImage cropped =
        observation.generateMaskedImage(second, handler, MaskedImageExtent::CroppedToInstances);
    EXPECT_EQ(cropped.pixelColor(0, 0), orange);
    EXPECT_EQ(qAlpha(cropped.pixel(1, 0)), 128);
}

TEST_F(InstanceMaskObservationTest, InstancesThatDoNotExistAreRefused) {
    EXPECT_EQ(failureOf({}, handler), VisionError::Category::UnknownInstance);
    for (const int unknown : {-1, 0, 3, 256, 1000})
        EXPECT_EQ(failureOf(std::array{1, unknown}, handler),
                  VisionError::Category::UnknownInstance)
            << unknown;
}

TEST_F(InstanceMaskObservationTest, APictureOfAnotherSizeIsRefused) {
    const ImageRequestHandler other(painted({5, 4}, [](int, int) { return orange; }));
    EXPECT_EQ(failureOf(both, other), VisionError::Category::OtherPicture);
}

TEST_F(InstanceMaskObservationTest, AHandlerFillsTheRequestsResults) {
    GenerateForegroundInstanceMaskRequest request(
        std::make_shared<const ToldSegmenter>(twoInstances()));
    EXPECT_THAT(request.results(), IsEmpty());
    handler.perform(request);
    ASSERT_EQ(request.results().size(), 1U);
    EXPECT_THAT(request.results().front().allInstances(), ElementsAre(1, 2));
}

TEST_F(InstanceMaskObservationTest, APictureWithoutSubjectLeavesNoResult) {
    Foreground nothing = twoInstances();
    nothing.instanceCount = 0;
    GenerateForegroundInstanceMaskRequest request(std::make_shared<const ToldSegmenter>(nothing));
    handler.perform(request);
    EXPECT_THAT(request.results(), IsEmpty());
}

TEST_F(InstanceMaskObservationTest, AFailedPerformanceLeavesNoResult) {
    GenerateForegroundInstanceMaskRequest request(
        std::make_shared<const ToldSegmenter>(twoInstances()));
    handler.perform(request);
    EXPECT_THROW(ImageRequestHandler(QImage()).perform(request), VisionError);
    EXPECT_THAT(request.results(), IsEmpty());
}

TEST_F(InstanceMaskObservationTest, AnEmptyPictureAndAWithdrawnWishAreErrorsOfTheirOwn) {
    GenerateForegroundInstanceMaskRequest request;
    try {
        ImageRequestHandler(QImage()).perform(request);
        FAIL() << "nothing was thrown";
    } catch (const VisionError& error) {
        EXPECT_EQ(error.category(), VisionError::Category::EmptyPicture);
    }
    std::stop_source source;
    source.request_stop();
    try {
        handler.perform(request, source.get_token());
        FAIL() << "nothing was thrown";
    } catch (const VisionError& error) {
        EXPECT_EQ(error.category(), VisionError::Category::Cancelled);
    }
}

} // namespace
} // namespace stillwick
