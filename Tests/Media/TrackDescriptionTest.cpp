#include "HandmadeFrame.h"

#include "Media/FrameSource.h"
#include "Media/PictureConverter.h"
#include "Media/TrackDescription.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRect>
#include <QTemporaryDir>
#include <QtEndian>

#include <array>
#include <string>

namespace stillwick::testing {

namespace {

// Greys far apart for the four corners of the stored picture, clockwise from the upper left.
constexpr std::array marks = {30, 90, 160, 230};
constexpr int edge = 8;

/// A picture of 48 x 32 whose corners are marked.
HandmadeFrame cornered() {
    HandmadeFrame frame(AV_PIX_FMT_GRAY8, 48, 32);
    frame.fill(0, QRect(0, 0, edge, edge), marks[0]);
    frame.fill(0, QRect(48 - edge, 0, edge, edge), marks[1]);
    frame.fill(0, QRect(48 - edge, 32 - edge, edge, edge), marks[2]);
    frame.fill(0, QRect(0, 32 - edge, edge, edge), marks[3]);
    return frame;
}

std::array<int, 4> cornersOf(const QImage& image) {
    const int right = image.width() - edge / 2;
    const int bottom = image.height() - edge / 2;
    return {storedAt(image, edge / 2, edge / 2).r, storedAt(image, right, edge / 2).r,
            storedAt(image, right, bottom).r, storedAt(image, edge / 2, bottom).r};
}

struct Turn {
    int quarters = 0;
    bool isMirrored = false;
    std::array<int, 4> corners{}; ///< which stored corner comes to lie where, clockwise
};

// A clockwise turn brings the lower left corner to the upper left.
constexpr std::array turns = {
    Turn{0, false, {0, 1, 2, 3}}, Turn{1, false, {3, 0, 1, 2}}, Turn{2, false, {2, 3, 0, 1}},
    Turn{3, false, {1, 2, 3, 0}}, Turn{0, true, {1, 0, 3, 2}},  Turn{1, true, {2, 1, 0, 3}},
    Turn{2, true, {3, 2, 1, 0}},  Turn{3, true, {0, 3, 2, 1}},
};

TEST(TrackDescriptionTest, AllEightOrientationsPutTheCornersWhereTheyBelong) {
    for (const Turn& turn : turns) {
        TrackDescription track;
        track.quarterTurns = turn.quarters;
        track.isMirrored = turn.isMirrored;
        const VideoFrame frame = cornered().video(track);
        const QImage image = PictureConverter().convert(frame);
        SCOPED_TRACE(std::to_string(turn.quarters) + (turn.isMirrored ? " mirrored" : ""));
        EXPECT_EQ(image.size(), turn.quarters % 2 == 0 ? QSize(48, 32) : QSize(32, 48));
        EXPECT_EQ(image.format(), QImage::Format_RGBA8888_Premultiplied);
        const auto corners = cornersOf(image);
        for (std::size_t i = 0; i < corners.size(); ++i)
            EXPECT_EQ(corners.at(i), marks.at(std::size_t(turn.corners.at(i)))) << i;
        const QImage stored =
            PictureConverter().convert(frame, PictureConverter::Orientation::AsStored);
        EXPECT_EQ(stored.size(), QSize(48, 32));
        EXPECT_EQ(cornersOf(stored), marks);
    }
}

/// The upper left part (a b / c d) of a display matrix.
using Matrix = std::array<int, 4>;

/// A copy of a clip whose track has another display matrix.
QString withMatrix(const QString& clip, const Matrix& matrix, const QTemporaryDir& folder) {
    QFile file(clip);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = file.readAll();
    // ISO/IEC 14496-12: in version 0 of the track header the matrix is 40 bytes after its name.
    const auto place = bytes.indexOf("tkhd") + 4 + 40;
    constexpr std::array<int, 4> cells = {0, 1, 3, 4};
    for (std::size_t i = 0; i < cells.size(); ++i)
        qToBigEndian(std::int32_t(matrix.at(i)) * 65536, bytes.data() + place + 4 * cells.at(i));
    QString path = folder.filePath(QStringLiteral("turned.mp4"));
    QFile turned(path);
    if (!turned.open(QIODevice::WriteOnly) || turned.write(bytes) != bytes.size())
        return {};
    return path;
}

/// The first picture as the ffmpeg program shows it.
QImage byFfmpeg(const QString& path, QSize size) {
    QProcess process;
    process.start(QStringLiteral("ffmpeg"),
                  QStringLiteral("-nostdin -v error -flags unaligned -i %1 -frames:v 1 -sws_flags "
                                 "bicubic+accurate_rnd+full_chroma_int -pix_fmt rgba -f rawvideo -")
                      .arg(path)
                      .split(u' '));
    if (!process.waitForFinished())
        return {};
    const QByteArray bytes = process.readAllStandardOutput();
    if (bytes.size() != qsizetype(4) * size.width() * size.height())
        return {};
    return QImage(reinterpret_cast<const uchar*>(bytes.constData()), size.width(), size.height(),
                  QImage::Format_RGBA8888_Premultiplied)
        .copy();
}

QImage firstPicture(const QString& path) {
    FrameSource source(path, {});
    return PictureConverter().convert(*source.frameAt(CMTime::zero(), {}, {}));
}

// Another scaler rounds otherwise; a wrong orientation differs by 60 and more.
constexpr double otherScaler = 5;

TEST(TrackDescriptionTest, MatricesInFilesAreFollowedAsTheFfmpegProgramFollowsThem) {
    const QTemporaryDir folder;
    const QString clip = QStringLiteral(STILLWICK_CLIPS "/films/one_picture.mp4");
    const QImage stored = firstPicture(clip);
    constexpr std::array<Matrix, 8> matrices = {{{1, 0, 0, 1},
                                                 {0, 1, -1, 0},
                                                 {-1, 0, 0, -1},
                                                 {0, -1, 1, 0},
                                                 {-1, 0, 0, 1},
                                                 {1, 0, 0, -1},
                                                 {0, 1, 1, 0},
                                                 {0, -1, -1, 0}}};
    for (const Matrix& matrix : matrices) {
        const QString path = withMatrix(clip, matrix, folder);
        const QSize size = matrix[0] != 0 ? stored.size() : stored.size().transposed();
        const QImage expected = byFfmpeg(path, size);
        ASSERT_FALSE(expected.isNull());
        const QImage picture = firstPicture(path);
        SCOPED_TRACE(::testing::PrintToString(matrix));
        EXPECT_LT(meanDistance(picture, expected), otherScaler);
        EXPECT_EQ(meanDistance(picture, stored) < otherScaler, matrix == matrices[0]);
    }
}

TEST(TrackDescriptionTest, TurnsOfOtherAnglesAndBrokenMatricesAreNotFollowed) {
    const QTemporaryDir folder;
    const QString clip = QStringLiteral(STILLWICK_CLIPS "/films/one_picture.mp4");
    const QImage stored = firstPicture(clip);
    for (const Matrix& matrix :
         {Matrix{1, 1, -1, 1}, Matrix{0, 0, 0, 0}, Matrix{2, 1, -1, 2}, Matrix{3, 0, 0, 3}})
        EXPECT_EQ(firstPicture(withMatrix(clip, matrix, folder)), stored);
}

TEST(TrackDescriptionTest, CroppedPicturesAreCutToThePixel) {
    const QString clip = QStringLiteral(STILLWICK_CLIPS "/films/cropped.mp4");
    // Coded 176 x 144, the encoder's own crop of 8 rows replaced by 10, and 6 columns on the left.
    const QImage expected = byFfmpeg(clip, QSize(170, 134));
    ASSERT_FALSE(expected.isNull());
    EXPECT_LT(meanDistance(firstPicture(clip), expected), otherScaler);
}

struct Aspect {
    AVRational pixel{0, 1};
    QSize size;
};

QImage shown(AVRational ofFrame, AVRational ofContainer, QSize size) {
    HandmadeFrame frame(AV_PIX_FMT_GRAY8, size.width(), size.height());
    frame.fill(0, QRect(0, 0, size.width() / 2, size.height() / 2), 200);
    frame.tags().sample_aspect_ratio = ofFrame;
    TrackDescription track;
    track.sampleAspectRatio = ofContainer;
    return PictureConverter().convert(frame.video(track));
}

TEST(TrackDescriptionTest, PixelsAreMadeSquareByGrowingThePicture) {
    const std::array cases = {
        Aspect{{1, 1}, {720, 480}},       Aspect{{2, 1}, {1440, 480}},
        Aspect{{1, 2}, {720, 960}},       Aspect{{16, 11}, {1047, 480}}, // 720 * 16 / 11 = 1047.3
        Aspect{{8, 9}, {720, 540}},       Aspect{{32, 27}, {853, 480}},  // 853.3
        Aspect{{1280, 1281}, {720, 480}}, Aspect{{1975, 1986}, {720, 480}},
        Aspect{{11, 1}, {720, 480}},      Aspect{{1, 11}, {720, 480}},
        Aspect{{0, 1}, {720, 480}},       Aspect{{5, 0}, {720, 480}},
        Aspect{{-2, 1}, {720, 480}},
    };
    for (const Aspect& aspect : cases) {
        SCOPED_TRACE(std::to_string(aspect.pixel.num) + ":" + std::to_string(aspect.pixel.den));
        const QImage image = shown(aspect.pixel, {0, 1}, {720, 480});
        ASSERT_EQ(image.size(), aspect.size);
        // The bright quarter stays a quarter; near its edges the filter rings.
        constexpr int away = 12;
        EXPECT_EQ(storedAt(image, image.width() / 2 - away, image.height() / 2 - away).g, 200);
        EXPECT_EQ(storedAt(image, image.width() / 2 + away, image.height() / 2 - away).g, 0);
        EXPECT_EQ(storedAt(image, image.width() / 2 - away, image.height() / 2 + away).g, 0);
        EXPECT_EQ(image.format(), QImage::Format_RGBA8888_Premultiplied);
    }
}

TEST(TrackDescriptionTest, TheFramesOwnAspectRatioWinsOverTheContainers) {
    EXPECT_EQ(shown({2, 1}, {1, 2}, {64, 48}).size(), QSize(128, 48));
    EXPECT_EQ(shown({0, 1}, {1, 2}, {64, 48}).size(), QSize(64, 96));
}

TEST(TrackDescriptionTest, APictureIsStretchedBeforeItIsTurned) {
    HandmadeFrame frame = cornered();
    frame.tags().sample_aspect_ratio = {2, 1};
    TrackDescription track;
    track.quarterTurns = 1;
    EXPECT_EQ(PictureConverter().convert(frame.video(track)).size(), QSize(32, 96));
}

TEST(TrackDescriptionTest, OddPicturesAreStretchedToo) {
    HandmadeFrame frame(AV_PIX_FMT_YUV420P, 321, 241);
    frame.fill(0, 126);
    frame.fill(1, 128);
    frame.fill(2, 128);
    frame.tags().sample_aspect_ratio = {2, 1};
    const QImage wide = PictureConverter().convert(frame.video());
    EXPECT_EQ(wide.size(), QSize(642, 241));
    frame.tags().sample_aspect_ratio = {1, 2};
    const QImage high = PictureConverter().convert(frame.video());
    EXPECT_EQ(high.size(), QSize(321, 482));
    EXPECT_EQ(storedAt(wide, 641, 240), storedAt(wide, 0, 0));
    EXPECT_EQ(storedAt(high, 320, 481), storedAt(high, 0, 0));
}

} // namespace

} // namespace stillwick::testing
