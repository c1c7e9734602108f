#include "Stillwick/SubjectExtractionService.h"

#include "Await.h"
#include "ColumnSegmenter.h"
#include "Stillwick/AppError.h"
#include "Vision/NetworkSegmenter.h"
#include "Vision/VisionError.h"

#include <QCoroTask>
#include <gtest/gtest.h>

#include <QColorSpace>
#include <QCoreApplication>
#include <QThread>

namespace stillwick {
namespace {

using testing::ColumnSegmenter;

class FailingSegmenter final : public ForegroundSegmenter {
public:
    [[nodiscard]] Foreground segment(const QImage&, std::stop_token) const override {
        throw VisionError(VisionError::Category::SegmentationFailed, QStringLiteral("refused"));
    }
};

// Ends only when it is told to.
class PatientSegmenter final : public ForegroundSegmenter {
public:
    [[nodiscard]] Foreground segment(const QImage&, std::stop_token stop) const override {
        while (!stop.stop_requested())
            QThread::yieldCurrentThread();
        throw VisionError(VisionError::Category::Cancelled);
    }
};

QImage picture() {
    QImage image(10, 4, QImage::Format_RGBA8888_Premultiplied);
    image.fill(QColor(10, 120, 230));
    image.setColorSpace(QColorSpace(QColorSpace::SRgb));
    return image;
}

class SubjectExtractionServiceTest : public ::testing::Test {
protected:
    std::vector<QImage> extracted(const std::shared_ptr<const ForegroundSegmenter>& segmenter,
                                  ExportMode mode, bool crop) {
        SubjectExtractionService service(segmenter);
        return testing::await(service.extract(picture(), mode, crop));
    }

    int m_argc = 1;
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argc, m_argv};
    std::shared_ptr<const ColumnSegmenter> m_two =
        std::make_shared<const ColumnSegmenter>(std::vector{3, 4});
};

TEST_F(SubjectExtractionServiceTest, MergedGivesOnePictureOfAllSubjects) {
    const std::vector<QImage> images = extracted(m_two, ExportMode::merged, false);
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(images[0].size(), QSize(10, 4));
    EXPECT_EQ(images[0].pixelColor(0, 0), QColor(10, 120, 230));
    EXPECT_EQ(images[0].pixelColor(6, 3), QColor(10, 120, 230));
    EXPECT_EQ(qAlpha(images[0].pixel(7, 0)), 0);
}

TEST_F(SubjectExtractionServiceTest, PerSubjectGivesOneEachTheLowerIndexFirst) {
    const std::vector<QImage> images = extracted(m_two, ExportMode::perSubject, false);
    ASSERT_EQ(images.size(), 2U);
    for (const QImage& image : images)
        EXPECT_EQ(image.size(), QSize(10, 4));
    EXPECT_EQ(qAlpha(images[0].pixel(2, 0)), 255);
    EXPECT_EQ(qAlpha(images[0].pixel(3, 0)), 0);
    EXPECT_EQ(qAlpha(images[1].pixel(2, 0)), 0);
    EXPECT_EQ(qAlpha(images[1].pixel(3, 0)), 255);
}

TEST_F(SubjectExtractionServiceTest, CroppingCutsEachToItsOwnSubjects) {
    EXPECT_EQ(extracted(m_two, ExportMode::merged, true).at(0).size(), QSize(7, 4));
    const std::vector<QImage> images = extracted(m_two, ExportMode::perSubject, true);
    ASSERT_EQ(images.size(), 2U);
    EXPECT_EQ(images[0].size(), QSize(3, 4));
    EXPECT_EQ(images[1].size(), QSize(4, 4));
}

TEST_F(SubjectExtractionServiceTest, OneSearchPerPictureWhateverTheMode) {
    for (const ExportMode mode : allExportModes) {
        const auto segmenter = std::make_shared<const ColumnSegmenter>(std::vector{2, 2, 2});
        static_cast<void>(extracted(segmenter, mode, true));
        EXPECT_EQ(segmenter->calls, 1);
    }
}

TEST_F(SubjectExtractionServiceTest, TheWorkIsDoneOffTheMainThread) {
    m_two->onMainThread = true;
    static_cast<void>(extracted(m_two, ExportMode::merged, false));
    EXPECT_FALSE(m_two->onMainThread);
}

TEST_F(SubjectExtractionServiceTest, NoSubjectIsTheSameErrorInBothModes) {
    const auto none = std::make_shared<const ColumnSegmenter>(std::vector<int>{});
    for (const ExportMode mode : allExportModes)
        try {
            static_cast<void>(extracted(none, mode, false));
            FAIL() << "nothing was thrown";
        } catch (const AppError& error) {
            EXPECT_EQ(error, AppError::noSubjectFound());
        }
}

TEST_F(SubjectExtractionServiceTest, APlainPictureHasNoSubject) {
    EXPECT_THROW(static_cast<void>(extracted(standardSegmenter(), ExportMode::merged, false)),
                 AppError);
}

TEST_F(SubjectExtractionServiceTest, TheVisionLayersErrorComesThroughUnchanged) {
    try {
        static_cast<void>(
            extracted(std::make_shared<const FailingSegmenter>(), ExportMode::merged, false));
        FAIL() << "nothing was thrown";
    } catch (const VisionError& error) {
        EXPECT_EQ(error.category(), VisionError::Category::SegmentationFailed);
        EXPECT_EQ(error.libraryText(), QStringLiteral("refused"));
    }
}

TEST_F(SubjectExtractionServiceTest, AnEmptyPictureIsTheVisionLayersError) {
    SubjectExtractionService service(m_two);
    EXPECT_THROW(
        static_cast<void>(testing::await(service.extract(QImage(), ExportMode::merged, false))),
        VisionError);
}

TEST_F(SubjectExtractionServiceTest, WithoutASegmenterLiftingIsUnavailable) {
    try {
        static_cast<void>(extracted(nullptr, ExportMode::merged, false));
        FAIL() << "nothing was thrown";
    } catch (const AppError& error) {
        EXPECT_EQ(error, AppError::subjectLiftingUnavailable());
    }
}

// The program's own weights, cut short and with one bit turned: no picture is looked at, not even
// one that is none.
TEST_F(SubjectExtractionServiceTest, DamagedOrMissingWeightsMakeLiftingUnavailable) {
    const std::span<const std::byte> whole = networkWeights();
    std::vector<std::byte> turned(whole.begin(), whole.end());
    turned[turned.size() / 2] ^= std::byte{1};
    for (const std::span<const std::byte> weights :
         {std::span<const std::byte>(), whole.first(whole.size() - 1),
          std::span<const std::byte>(turned)}) {
        const SubjectExtractionService service(networkSegmenter(weights));
        try {
            static_cast<void>(service.extractNow(QImage(), ExportMode::merged, false));
            FAIL() << "nothing was thrown";
        } catch (const AppError& error) {
            EXPECT_EQ(error, AppError::subjectLiftingUnavailable());
        }
    }
}

TEST_F(SubjectExtractionServiceTest, AWithdrawnExtractionEndsInCancelled) {
    SubjectExtractionService service(std::make_shared<const PatientSegmenter>());
    std::stop_source source;
    QCoro::Task<std::vector<QImage>> task =
        service.extract(picture(), ExportMode::merged, false, source.get_token());
    source.request_stop();
    try {
        static_cast<void>(testing::await(std::move(task)));
        FAIL() << "nothing was thrown";
    } catch (const VisionError& error) {
        EXPECT_EQ(error.category(), VisionError::Category::Cancelled);
    }
}

TEST_F(SubjectExtractionServiceTest, ExtractionsAtTheSameTimeShareTheService) {
    SubjectExtractionService service(m_two);
    std::vector<QCoro::Task<std::vector<QImage>>> tasks;
    constexpr int count = 6;
    tasks.reserve(count);
    for (int i = 0; i < count; ++i)
        tasks.push_back(service.extract(
            picture(), i % 2 == 0 ? ExportMode::merged : ExportMode::perSubject, false));
    for (std::size_t i = 0; i < tasks.size(); ++i)
        EXPECT_EQ(testing::await(std::move(tasks[i])).size(), i % 2 == 0 ? 1U : 2U);
}

TEST_F(SubjectExtractionServiceTest, AtOnceGivesTheSame) {
    const SubjectExtractionService service(m_two);
    EXPECT_EQ(service.extractNow(picture(), ExportMode::perSubject, true),
              extracted(m_two, ExportMode::perSubject, true));
}

TEST(BitmapFromMaskTest, NoImageIsAnExportFailure) {
    try {
        static_cast<void>(bitmapFromMask(QImage()));
        FAIL() << "nothing was thrown";
    } catch (const AppError& error) {
        EXPECT_EQ(error.description(),
                  QStringLiteral("Échec de l'export : Conversion du masque en image impossible."));
    }
}

TEST(BitmapFromMaskTest, AnImageWithoutColourSpaceIsInSrgb) {
    QImage image(2, 2, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::red);
    EXPECT_EQ(bitmapFromMask(image).colorSpace(), QColorSpace(QColorSpace::SRgb));
    image.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    EXPECT_EQ(bitmapFromMask(image).colorSpace(), QColorSpace(QColorSpace::DisplayP3));
}

} // namespace
} // namespace stillwick
