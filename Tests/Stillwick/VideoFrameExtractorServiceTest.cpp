#include "Stillwick/VideoFrameExtractorService.h"

#include "Await.h"
#include "Media/MediaAsset.h"
#include "Stillwick/AppError.h"

#include <QColorSpace>
#include <QCoreApplication>
#include <QCoroTask>

#include <gtest/gtest.h>

#include <optional>

namespace {

using namespace stillwick;

const QString sample =
    QStringLiteral(STILLWICK_SOURCE_DIR "/Samples/balles.mp4"); // 30 pictures a second, 4 s

std::shared_ptr<const MediaAsset> film(const QString& path) {
    return std::make_shared<const MediaAsset>(path);
}

/// The error that a request ends with; none where it gave a picture.
std::optional<AppError> errorOf(QCoro::Task<QImage> request) {
    try {
        stillwick::testing::await(std::move(request));
        return std::nullopt;
    } catch (const AppError& error) {
        return error;
    }
}

TEST(VideoFrameExtractorService, WithoutAFilmReportsThatNoneIsLoaded) {
    VideoFrameExtractorService service;
    EXPECT_EQ(errorOf(service.image(CMTime::zero())), AppError::noVideoLoaded());
}

TEST(VideoFrameExtractorService, GivesTheWholePictureWithItsColourSpace) {
    VideoFrameExtractorService service;
    service.prepare(film(sample));
    const QImage picture = stillwick::testing::await(service.image(CMTime::make(1, 1)));
    EXPECT_EQ(picture.size(), QSize(1280, 720));
    EXPECT_EQ(picture.format(), QImage::Format_RGBA8888_Premultiplied);
    EXPECT_EQ(picture.colorSpace(), QColorSpace(QColorSpace::SRgb));
}

TEST(VideoFrameExtractorService, ATimePastTheEndFailsInsteadOfGivingTheLastPicture) {
    VideoFrameExtractorService service;
    service.prepare(film(sample));
    const auto error = errorOf(service.image(CMTime::make(4001, 1000)));
    ASSERT_TRUE(error);
    EXPECT_EQ(
        error->description(),
        QStringLiteral("Échec de l'extraction de l'image : Il n'y a pas d'image à cet instant."));
}

TEST(VideoFrameExtractorService, TheFilmsEndStillShowsItsLastPicture) {
    VideoFrameExtractorService service;
    service.prepare(film(sample));
    const QImage last = stillwick::testing::await(service.image(CMTime::make(119, 30)));
    EXPECT_EQ(stillwick::testing::await(service.image(CMTime::make(4, 1))), last);
    EXPECT_NE(stillwick::testing::await(service.image(CMTime::make(118, 30))), last);
}

TEST(VideoFrameExtractorService, ASecondFilmReplacesTheFirst) {
    VideoFrameExtractorService service;
    service.prepare(film(QStringLiteral("/nowhere/film.mp4")));
    const auto error = errorOf(service.image(CMTime::zero()));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->detail(), QStringLiteral("Le fichier est introuvable."));
    service.prepare(film(sample));
    EXPECT_EQ(stillwick::testing::await(service.image(CMTime::zero())).size(), QSize(1280, 720));
}

TEST(VideoFrameExtractorService, ARequestUnderWayKeepsItsFilm) {
    VideoFrameExtractorService service;
    service.prepare(film(sample));
    QCoro::Task<QImage> request = service.image(CMTime::make(3, 1));
    service.prepare(film(QStringLiteral("/nowhere/film.mp4")));
    EXPECT_EQ(stillwick::testing::await(std::move(request)).size(), QSize(1280, 720));
}

TEST(VideoFrameExtractorService, ARequestOutlivesTheService) {
    auto service = std::make_unique<VideoFrameExtractorService>();
    service->prepare(film(sample));
    QCoro::Task<QImage> request = service->image(CMTime::make(2, 1));
    service.reset();
    EXPECT_EQ(stillwick::testing::await(std::move(request)).size(), QSize(1280, 720));
}

TEST(VideoFrameExtractorService, AWithdrawnRequestEndsWithAnError) {
    VideoFrameExtractorService service;
    service.prepare(film(sample));
    std::stop_source stop;
    stop.request_stop();
    const auto error = errorOf(service.image(CMTime::make(2, 1), stop.get_token()));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->detail(), QStringLiteral("La demande a été abandonnée."));
}

TEST(VideoFrameExtractorService, AFailureLeavesTheServiceAsItWas) {
    VideoFrameExtractorService service;
    service.prepare(film(sample));
    const QImage before = stillwick::testing::await(service.image(CMTime::make(1, 1)));
    ASSERT_TRUE(errorOf(service.image(CMTime::make(-1, 1))));
    EXPECT_EQ(stillwick::testing::await(service.image(CMTime::make(1, 1))), before);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
