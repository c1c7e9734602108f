// How frames are found: what a request costs, when it ends, and which times it takes. That the
// frames are the right ones is proved in ExactFramesTest.
#include "ReadingPosition.h"
#include "Reference.h"

#include "Media/FrameSource.h"
#include "Media/MediaError.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <chrono>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <thread>

namespace stillwick::testing {

namespace {

using Category = MediaError::Category;

QString clip(const char* name) {
    return QStringLiteral(STILLWICK_CLIPS "/films/") + QString::fromUtf8(name);
}

CMTime timeAt(FrameSource& source, const CMTime& time) {
    return source.filmTime(*source.frameAt(time, {}, {}));
}

std::optional<Category> refusalOf(FrameSource& source, const CMTime& time,
                                  const std::stop_token& stop = {}) {
    try {
        (void)source.frameAt(time, {}, stop);
        return std::nullopt;
    } catch (const MediaError& error) {
        return error.category();
    }
}

// closed_h264.mp4: 90 pictures, 30 a second, a key picture every 24, in ticks of 1/15360 s.
constexpr std::int64_t ticksPerSecond = 15360;
constexpr std::int64_t ticksPerFrame = 512;

TEST(FrameSourceTest, AFrameIsShownFromItsFirstTickToTheNextFramesFirst) {
    FrameSource source(clip("closed_h264.mp4"), {});
    for (const std::int64_t frame : {17, 24, 25, 47, 48, 89, 1}) {
        const std::int64_t start = frame * ticksPerFrame;
        EXPECT_EQ(timeAt(source, CMTime::make(start, ticksPerSecond)), CMTime::make(frame, 30));
        EXPECT_EQ(timeAt(source, CMTime::make(start - 1, ticksPerSecond)),
                  CMTime::make(frame - 1, 30));
        EXPECT_EQ(timeAt(source, CMTime::make(start + ticksPerFrame - 1, ticksPerSecond)),
                  CMTime::make(frame, 30));
    }
}

// 1/30 s lies between ticks of 1/1001 s and of 1/2^31 s; a nanosecond is finer than a tick.
TEST(FrameSourceTest, TimesBetweenTicksOfOtherTimescalesAreComparedExactly) {
    FrameSource source(clip("closed_h264.mp4"), {});
    for (const std::int64_t frame : {1, 31, 50}) {
        const CMTime exact = CMTime::make(frame, 30);
        constexpr std::int32_t finest = std::numeric_limits<std::int32_t>::max();
        for (const std::int32_t timescale : {1001, 90000, 600, 1000000000, finest}) {
            const std::int64_t before = (frame * timescale - 1) / 30; // the last tick before it
            EXPECT_EQ(timeAt(source, CMTime::make(before, timescale)), CMTime::make(frame - 1, 30))
                << timescale;
            const std::int64_t atOrAfter = before + 1;
            EXPECT_EQ(timeAt(source, CMTime::make(atOrAfter, timescale)), exact) << timescale;
        }
    }
}

TEST(FrameSourceTest, TheEndBelongsToTheLastFrameAndWhatComesAfterToNone) {
    FrameSource source(clip("closed_h264.mp4"), {});
    const CMTime last = CMTime::make(89, 30);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(timeAt(source, CMTime::make(3, 1)), last);
        EXPECT_EQ(timeAt(source, CMTime::make(3 * ticksPerSecond - 1, ticksPerSecond)), last);
        EXPECT_EQ(refusalOf(source, CMTime::make(3 * ticksPerSecond + 1, ticksPerSecond)),
                  Category::TimeOutOfRange);
        EXPECT_EQ(refusalOf(source, CMTime::make(3000000001, 1000000000)),
                  Category::TimeOutOfRange);
        EXPECT_EQ(refusalOf(source, CMTime::make(100, 1)), Category::TimeOutOfRange);
        EXPECT_EQ(timeAt(source, CMTime::zero()), CMTime::zero());
    }
}

TEST(FrameSourceTest, TheEndIsTheSameInEveryContainerOfTheSameFilm) {
    for (const char* name : {"closed_h264.mkv", "closed_h264.ts", "closed_h264.flv",
                             "closed_h264.avi", "large_times.ts", "wrapping_times.ts"}) {
        SCOPED_TRACE(name);
        FrameSource source(clip(name), {});
        // Matroska and FLV round times to milliseconds.
        ASSERT_FALSE(refusalOf(source, CMTime::make(2998, 1000)));
        EXPECT_NEAR(timeAt(source, CMTime::make(2998, 1000)).seconds(), 89 / 30.0, 0.001);
        EXPECT_EQ(refusalOf(source, CMTime::make(3100, 1000)), Category::TimeOutOfRange);
    }
}

TEST(FrameSourceTest, TimesThatAreNoPlaceInAFilmAreRefused) {
    FrameSource source(clip("closed_h264.mp4"), {});
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    for (const CMTime& time : {CMTime::make(-1, 1000000000), CMTime::make(-5, 1), CMTime::invalid(),
                               CMTime::indefinite(), CMTime::positiveInfinity(),
                               CMTime::negativeInfinity(), CMTime::make(1, 0), CMTime::make(0, 0),
                               CMTime::make(largest, 1), CMTime::make(largest, 1000000000),
                               CMTime::make(std::numeric_limits<std::int64_t>::min(), 1),
                               CMTime::fromSeconds(std::numeric_limits<double>::quiet_NaN(), 600)})
        EXPECT_EQ(refusalOf(source, time), Category::TimeOutOfRange)
            << time.value << '/' << time.timescale;
    EXPECT_EQ(timeAt(source, CMTime::make(1, 1)), CMTime::make(1, 1));
}

// late_start.mp4 is shifted by 0.7 s, 21 frames: ffprobe calls the first picture's time 10752.
TEST(FrameSourceTest, BeforeALateFirstPictureThatPictureIsShown) {
    FrameSource source(clip("late_start.mp4"), {});
    const CMTime first = CMTime::make(21, 30);
    EXPECT_EQ(timeAt(source, CMTime::make(2, 1)), CMTime::make(60, 30));
    EXPECT_EQ(timeAt(source, CMTime::zero()), first);
    EXPECT_EQ(timeAt(source, CMTime::make(1, 3)), first);
    EXPECT_EQ(timeAt(source, CMTime::make(10751, ticksPerSecond)), first);
    EXPECT_EQ(timeAt(source, first), first);
    EXPECT_EQ(timeAt(source, CMTime::make(22, 30)), CMTime::make(22, 30));
    EXPECT_EQ(timeAt(source, CMTime::make(37, 10)), CMTime::make(110, 30));
    EXPECT_EQ(refusalOf(source, CMTime::make(38, 10)), Category::TimeOutOfRange);
}

// ffprobe: the first picture of the edit's film has the time 0, those before it are hidden.
TEST(FrameSourceTest, WhatAnEditListHidesIsNotShown) {
    FrameSource source(clip("edit_list_closed.mp4"), {});
    const ReferenceFilm film = referenceFor(clip("edit_list_closed.mp4"));
    ASSERT_FALSE(film.frames.empty());
    EXPECT_EQ(timeAt(source, CMTime::zero()),
              CMTime::make(film.frames.front().time, film.timeBaseDenominator));
}

/// How many packets of the film were read on behalf of a request.
std::int64_t cost(FrameSource& source, const CMTime& time) {
    const std::int64_t before = source.packetsDecoded();
    (void)source.frameAt(time, {}, {});
    return source.packetsDecoded() - before;
}

TEST(FrameSourceTest, TheNextFrameDecodesOn) {
    FrameSource source(clip("one_group_h264.mp4"), {}); // 75 pictures, 25 a second, one key picture
    (void)source.frameAt(CMTime::make(50, 25), {}, {});
    for (int frame = 51; frame < 70; ++frame)
        EXPECT_LE(cost(source, CMTime::make(frame, 25)), 4) << frame;
}

TEST(FrameSourceTest, TheSameFrameDecodesNothing) {
    FrameSource source(clip("one_group_h264.mp4"), {});
    (void)source.frameAt(CMTime::make(50, 25), {}, {});
    EXPECT_EQ(cost(source, CMTime::make(50, 25)), 0);
    EXPECT_EQ(cost(source, CMTime::make(101, 50)), 0); // its middle
}

// Groups of 24: whatever is asked for, one group and the decoder's delay suffice.
TEST(FrameSourceTest, AJumpDecodesOneGroupAtMost) {
    constexpr int delay = 12;
    std::mt19937 random(5);
    for (const char* name : {"closed_h264.mp4", "closed_h264.mkv", "closed_h264.ts"}) {
        SCOPED_TRACE(name);
        FrameSource source(clip(name), {});
        for (int i = 0; i < 30; ++i)
            EXPECT_LE(cost(source, CMTime::make(std::int64_t(random() % 90) * 2 + 1, 60)),
                      24 + delay);
    }
}

// Found by fuzzing: 6,030 packets by ffprobe, the keys among them without number, that give 210
// pictures, none of them towards the end.
TEST(FrameSourceTest, ALongStretchWithoutPicturesIsNotDecodedOverAndOver) {
    FrameSource source(
        QStringLiteral(STILLWICK_SOURCE_DIR "/Fuzz/crashes/long-without-pictures.mp4"), {});
    (void)source.frameAt(CMTime::make(276347713, 1), {}, {});
    EXPECT_LT(source.packetsDecoded(), 4 * 6030);
}

TEST(FrameSourceTest, AToleranceSavesDecoding) {
    FrameSource exact(clip("one_group_h264.mp4"), {});
    FrameSource tolerant(clip("one_group_h264.mp4"), {});
    const CMTime time = CMTime::make(70, 25);
    (void)exact.frameAt(time, {}, {});
    const SharedFrame frame =
        tolerant.frameAt(time, {CMTime::positiveInfinity(), CMTime::zero()}, {});
    EXPECT_LE(tolerant.filmTime(*frame), time);
    EXPECT_LT(tolerant.packetsDecoded(), exact.packetsDecoded() / 2);
}

TEST(FrameSourceTest, AToleranceAfterTakesTheFrameAtHandInsteadOfSeekingBack) {
    FrameSource source(clip("closed_h264.mp4"), {});
    (void)source.frameAt(CMTime::make(40, 30), {}, {});
    const std::int64_t before = source.packetsDecoded();
    const FrameSource::Tolerance tolerance{CMTime::zero(), CMTime::make(2, 30)};
    const SharedFrame near = source.frameAt(CMTime::make(38, 30), tolerance, {});
    EXPECT_EQ(source.filmTime(*near), CMTime::make(40, 30));
    EXPECT_EQ(source.packetsDecoded(), before);
    const SharedFrame tooFar = source.frameAt(CMTime::make(37, 30), tolerance, {});
    EXPECT_EQ(source.filmTime(*tooFar), CMTime::make(37, 30));
}

TEST(FrameSourceTest, AToleranceIsNotExceeded) {
    FrameSource source(clip("closed_h264.mp4"), {});
    std::mt19937 random(9);
    const CMTime before = CMTime::make(3, 30);
    for (int i = 0; i < 60; ++i) {
        const CMTime time = CMTime::make(std::int64_t(random() % 90), 30);
        const CMTime found = source.filmTime(*source.frameAt(time, {before, CMTime::zero()}, {}));
        EXPECT_LE(found, time);
        EXPECT_GE(found, time - before);
    }
}

TEST(FrameSourceTest, AWithdrawnRequestEndsSoonAndTheNextIsAnswered) {
    const QString path = QStringLiteral(STILLWICK_CLIPS "/long/one_group.mp4");
    const CMTime end = CMTime::make(1199, 60);
    FrameSource source(path, {});
    std::stop_source stop;
    std::thread caller([&stop, &path] {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (bytesRead(path) < QFileInfo(path).size() * 9 / 10 &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        stop.request_stop();
    });
    EXPECT_EQ(refusalOf(source, end, stop.get_token()), Category::Cancelled);
    EXPECT_LT(source.packetsDecoded(), 600); // of 1200
    caller.join();
    EXPECT_EQ(timeAt(source, CMTime::make(31, 60)), CMTime::make(31, 60));
    FrameSource fresh(path, {});
    EXPECT_EQ(hashOfPlanes(&source.frameAt(CMTime::make(40, 60), {}, {})->avFrame()),
              hashOfPlanes(&fresh.frameAt(CMTime::make(40, 60), {}, {})->avFrame()));
}

TEST(FrameSourceTest, ARequestWithdrawnWhileItReadsLeavesTheFilmReadable) {
    for (const char* name :
         {"closed_h264.ts", "closed_h264.mkv", "damaged.mpg", "closed_h264.avi"}) {
        FrameSource source(clip(name), {});
        for (int i = 0; i < 60; ++i) {
            std::stop_source stop;
            std::thread caller([&stop, i] {
                const auto moment =
                    std::chrono::steady_clock::now() + std::chrono::microseconds(30 * i);
                while (std::chrono::steady_clock::now() < moment) {
                }
                stop.request_stop();
            });
            (void)refusalOf(source, CMTime::make(i % 2 == 0 ? 70 : 40, 30), stop.get_token());
            caller.join();
            EXPECT_EQ(refusalOf(source, CMTime::make(i % 7 * 10, 30)), std::nullopt) << name;
        }
    }
}

TEST(FrameSourceTest, ARequestWithdrawnBeforehandTouchesNothing) {
    FrameSource source(clip("closed_h264.mp4"), {});
    (void)source.frameAt(CMTime::make(1, 1), {}, {});
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(refusalOf(source, CMTime::make(2, 1), stop.get_token()), Category::Cancelled);
    EXPECT_EQ(cost(source, CMTime::make(1, 1)), 0);
}

/// A transport stream with 17 MB of empty packets spread over it. *Source*: ISO/IEC 13818-1,
/// packets of 188 bytes, those of the identifier 0x1fff being empty.
QString largeStream(const char* name, const QTemporaryDir& folder) {
    QFile stream(clip(name));
    if (!stream.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = stream.readAll();
    constexpr qsizetype packet = 188;
    const QByteArray empty = QByteArray::fromHex("471fff10") + QByteArray(packet - 4, '\xff');
    const QByteArray gap = empty.repeated(90'000 * packet / bytes.size());
    QString path = folder.filePath(QString::fromUtf8(name));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    for (qsizetype place = 0; place < bytes.size(); place += packet)
        file.write(bytes.sliced(place, packet) + gap);
    return path;
}

TEST(FrameSourceTest, ALargeStreamWithoutJumpsIsNotReadWhole) {
    const QTemporaryDir folder;
    FrameSource source(largeStream("closed_h264.ts", folder), {});
    EXPECT_EQ(source.reader().table(), nullptr);
    EXPECT_EQ(timeAt(source, CMTime::make(80, 30)), CMTime::make(80, 30));
    EXPECT_EQ(timeAt(source, CMTime::make(5, 30)), CMTime::make(5, 30));
}

// Twice the same film of 3 s, joined.
TEST(FrameSourceTest, ALargeStreamThatJumpsBackIsJoined) {
    const QTemporaryDir folder;
    FrameSource source(largeStream("restarting_times.ts", folder), {});
    EXPECT_NE(source.reader().table(), nullptr);
    EXPECT_EQ(timeAt(source, CMTime::make(150, 30)), CMTime::make(150, 30));
    EXPECT_EQ(timeAt(source, CMTime::make(5, 30)), CMTime::make(5, 30));
}

/// Steps, jumps and refused requests at random: each frame is the one that a fresh source gives.
TEST(FrameSourceTest, ResultsDoNotDependOnWhatWasAskedBefore) {
    for (const char* name : {"open_h264.mp4", "open_hevc.ts", "open_raw.hevc", "variable_rate.mkv",
                             "mbaff_h264.ts", "alternate_vp9.webm", "full_chroma_h264.mp4",
                             "restarting_times.ts", "mpeg4_reordered.avi", "damaged.ts"}) {
        SCOPED_TRACE(name);
        const ReferenceFilm film = referenceFor(clip(name));
        ASSERT_FALSE(film.frames.empty());
        FrameSource source(clip(name), {});
        std::mt19937 random(11);
        std::size_t at = 0;
        const std::size_t count = film.frames.size() - 1; // the last frame's length is its own tale
        for (int step = 0; step < 80; ++step) {
            switch (random() % 5) {
            case 0:
                at = random() % count;
                break;
            case 1:
                at = at > 0 ? at - 1 : 0;
                break;
            case 2:
                EXPECT_TRUE(refusalOf(source, CMTime::make(1000, 1)));
                break;
            default:
                at = std::min(at + 1, count - 1);
            }
            const auto timeOf = [&film](std::size_t frame) {
                return CMTime::make(film.frames[frame].time * film.timeBaseNumerator,
                                    film.timeBaseDenominator);
            };
            const SharedFrame frame = source.frameAt(timeOf(at), {}, {});
            ASSERT_EQ(source.filmTime(*frame), timeOf(at)) << step;
            if (!film.isDamaged) {
                ASSERT_EQ(hashOfPlanes(&frame->avFrame()), film.frames[at].hash) << step;
            }
        }
    }
}

} // namespace

} // namespace stillwick::testing
