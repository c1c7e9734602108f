// What the cache keeps, what it drops, and when it is certain. The frames have no pixels worth
// looking at: only their times and sizes count.
#include "Media/FrameCache.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace stillwick::testing {

namespace {

// Ticks are thirtieths of a second, a frame each, beginning at the film's zero.
constexpr Timeline timeline{{1, 30}, 0};

SharedFrame frameAt(std::int64_t time, int width = 16, int height = 16) {
    libav::Frame frame = libav::makeFrame();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    frame->pts = time;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    return std::make_shared<const VideoFrame>(std::move(frame), TrackDescription());
}

/// About 12 MB; untouched memory costs nothing.
SharedFrame largeFrame(std::int64_t time) {
    return frameAt(time, 3840, 2160);
}

void insertRow(FrameCache& cache, std::int64_t from, std::int64_t to,
               SharedFrame (*make)(std::int64_t)) {
    SharedFrame last = make(from);
    cache.insert(last);
    for (std::int64_t time = from + 1; time <= to; ++time) {
        SharedFrame next = make(time);
        cache.insertPair(last, next);
        last = next;
    }
}

SharedFrame smallFrame(std::int64_t time) {
    return frameAt(time);
}

TEST(FrameCacheTest, AnswersOnlyWhereTheNextFrameIsKnown) {
    FrameCache cache;
    cache.begin(timeline);
    const SharedFrame frame = frameAt(10);
    cache.insert(frame);
    EXPECT_EQ(cache.frameAt(CMTime::make(10, 30)), nullptr);
    cache.setNext(10, 12); // a frame that is shown twice as long
    EXPECT_EQ(cache.frameAt(CMTime::make(10, 30)), frame);
    EXPECT_EQ(cache.frameAt(CMTime::make(23, 60)), frame);
    EXPECT_EQ(cache.frameAt(CMTime::make(12, 30)), nullptr);
    EXPECT_EQ(cache.frameAt(CMTime::make(9, 30)), nullptr);
    EXPECT_EQ(cache.frameAt(CMTime::indefinite()), nullptr);
    EXPECT_EQ(cache.frameAt(CMTime::make(-1, 30)), nullptr);
}

TEST(FrameCacheTest, TheLastFrameAnswersToTheFilmsEnd) {
    FrameCache cache;
    cache.begin(timeline);
    const SharedFrame frame = frameAt(10);
    cache.insert(frame);
    cache.setLast(10, 11);
    EXPECT_EQ(cache.frameAt(CMTime::make(11, 30)), frame);
    EXPECT_EQ(cache.frameAt(CMTime::make(331, 900)), nullptr) << "a thousandth past the end";
    EXPECT_EQ(cache.endTick(), 11);
    EXPECT_TRUE(cache.isLast(10));
}

TEST(FrameCacheTest, TheFirstFrameAnswersForWhatComesBeforeIt) {
    FrameCache cache;
    cache.begin(timeline);
    const SharedFrame frame = frameAt(10);
    cache.insert(frame);
    EXPECT_EQ(cache.frameAt(CMTime::zero()), nullptr);
    cache.setFirst(10);
    EXPECT_EQ(cache.frameAt(CMTime::zero()), frame);
    EXPECT_TRUE(cache.isFirst(10));
}

// A count of ticks that does not fit 64 bits must not wrap around to the film's beginning.
TEST(FrameCacheTest, ATimeTooFarToBeCountedIsPastTheEndAndNotBeforeTheBeginning) {
    for (const std::int64_t zero : {std::int64_t(0), std::int64_t(7), std::int64_t(-7)}) {
        FrameCache cache;
        cache.begin({{1, 90'000}, zero});
        cache.insert(frameAt(zero));
        cache.setFirst(zero);
        cache.setLast(zero, zero + 3000);
        EXPECT_NE(cache.frameAt(CMTime::zero()), nullptr);
        for (const std::int64_t value :
             {std::numeric_limits<std::int64_t>::max(), std::int64_t(1) << 50})
            EXPECT_EQ(cache.frameAt(CMTime::make(value, 1)), nullptr);
    }
}

TEST(FrameCacheTest, TheFrameOnScreenAnswersForItsTimeWhateverIsKnown) {
    FrameCache cache;
    cache.begin(timeline);
    const SharedFrame frame = frameAt(10);
    cache.setShown(frame, CMTime::make(41, 120));
    EXPECT_EQ(cache.frameAt(CMTime::make(41, 120)), frame);
    EXPECT_EQ(cache.frameAt(CMTime::make(40, 120)), nullptr);
}

TEST(FrameCacheTest, NeighboursAreThoseThatWereStated) {
    FrameCache cache;
    cache.begin(timeline);
    const SharedFrame a = frameAt(1);
    const SharedFrame b = frameAt(2);
    const SharedFrame c = frameAt(3);
    cache.insertPair(a, b);
    cache.insert(c);
    EXPECT_EQ(cache.after(1), b);
    EXPECT_EQ(cache.before(2), a);
    EXPECT_EQ(cache.after(2), nullptr) << "there may be one between 2 and 3";
    EXPECT_EQ(cache.before(3), nullptr);
}

TEST(FrameCacheTest, AFrameOfTheSameTimeDoesNotTakeThePlaceOfTheOneHeld) {
    FrameCache cache;
    cache.begin(timeline);
    const SharedFrame first = frameAt(5);
    cache.insert(first);
    cache.insert(frameAt(5));
    cache.setNext(5, 6);
    EXPECT_EQ(cache.frameAt(CMTime::make(5, 30)), first);
}

TEST(FrameCacheTest, AStretchEndsWhereAGapBegins) {
    FrameCache cache;
    cache.begin(timeline);
    insertRow(cache, 10, 20, &smallFrame);
    insertRow(cache, 25, 30, &smallFrame);
    const auto stretch = cache.stretchAround(15);
    ASSERT_TRUE(stretch);
    EXPECT_EQ(stretch->first, 10);
    EXPECT_EQ(stretch->last, 20);
    EXPECT_EQ(stretch->framesAhead, 5);
    EXPECT_FALSE(stretch->reachesStart);
    cache.setFirst(10);
    cache.setLast(20, 21);
    EXPECT_TRUE(cache.stretchAround(15)->reachesStart);
    EXPECT_TRUE(cache.stretchAround(15)->reachesEnd);
    EXPECT_FALSE(cache.stretchAround(22));
}

TEST(FrameCacheTest, HoldsNoMoreThanTheBoundAndKeepsWhatIsNear) {
    FrameCache cache;
    cache.begin(timeline);
    insertRow(cache, 0, 0, &largeFrame);
    cache.setPosition(0, FrameCache::Course::Resting);
    insertRow(cache, 0, 199, &largeFrame);
    EXPECT_LE(cache.size(), FrameCache::bound());
    EXPECT_GT(cache.size(), FrameCache::bound() - (std::size_t(16) << 20U));
    EXPECT_TRUE(cache.stretchAround(0));
    EXPECT_FALSE(cache.stretchAround(199));
}

TEST(FrameCacheTest, WhatLiesBehindTheTravellersBackGoesFirst) {
    FrameCache cache;
    cache.begin(timeline);
    insertRow(cache, 100, 100, &largeFrame);
    cache.setPosition(100, FrameCache::Course::Backward);
    insertRow(cache, 100, 140, &largeFrame);
    insertRow(cache, 20, 100, &largeFrame);
    const auto stretch = cache.stretchAround(100);
    ASSERT_TRUE(stretch);
    EXPECT_GT(100 - stretch->first, 2 * (stretch->last - 100));
}

TEST(FrameCacheTest, TwoFilmsShareTheBound) {
    auto first = std::make_unique<FrameCache>();
    first->begin(timeline);
    insertRow(*first, 0, 199, &largeFrame);
    FrameCache second;
    EXPECT_GT(first->size(), FrameCache::bound() / 2);
    second.begin(timeline);
    EXPECT_LE(first->size(), FrameCache::bound() / 2);
    insertRow(second, 0, 199, &largeFrame);
    EXPECT_LE(first->size() + second.size(), FrameCache::bound());
    first.reset();
    EXPECT_EQ(FrameCache::share(), FrameCache::bound());
    second.end();
    EXPECT_EQ(second.size(), 0U);
}

TEST(FrameCacheTest, TheBoundIsOneGibibyteOrAQuarterOfTheMemory) {
    EXPECT_LE(FrameCache::bound(), std::size_t(1) << 30U);
    EXPECT_GT(FrameCache::bound(), 0U);
}

} // namespace

} // namespace stillwick::testing
