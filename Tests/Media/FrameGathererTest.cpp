// What is left in the cache by what was decoded.
#include "Media/FrameGatherer.h"
#include "Media/MediaAsset.h"

#include <gtest/gtest.h>

#include <memory>

namespace stillwick::testing {

namespace {

// closed_h264.mp4: 90 pictures, 30 a second, a key picture every 24, in ticks of 1/15360 s.
constexpr std::int64_t ticksPerFrame = 512;

/// Untouched memory costs nothing.
SharedFrame frameOf(int width, int height, std::int64_t time) {
    libav::Frame frame = libav::makeFrame();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    frame->pts = time;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    return std::make_shared<const VideoFrame>(std::move(frame), TrackDescription());
}

/// With frames between the film's first and its second.
void fillToTheBrim(FrameCache& cache) {
    std::int64_t time = 1;
    for (const int size : {2048, 256, 64}) {
        for (std::size_t before = 0, step = 1; cache.size() + step < FrameCache::share(); ++time) {
            before = cache.size();
            cache.insert(frameOf(size, size, time));
            step = cache.size() - before;
        }
    }
    ASSERT_LT(time, ticksPerFrame);
}

TEST(FrameGathererTest, AFullCacheKeepsWhatIsDecodedOnTheWayToAPlaceJumpedTo) {
    const MediaAsset asset(QStringLiteral(STILLWICK_CLIPS "/films/closed_h264.mp4"));
    const auto cache = std::make_shared<FrameCache>();
    FrameGatherer gatherer(asset, cache, [] {}, {});
    fillToTheBrim(*cache);
    constexpr std::int64_t sought = 70;
    const auto found = gatherer.at(CMTime::make(sought, 30), {});
    ASSERT_EQ(found.frame->presentationTime(), sought * ticksPerFrame);
    for (std::int64_t frame = sought; frame > sought - 8; --frame) {
        const SharedFrame before = cache->before(frame * ticksPerFrame);
        ASSERT_NE(before, nullptr) << frame;
        EXPECT_EQ(before->presentationTime(), (frame - 1) * ticksPerFrame);
    }
}

} // namespace

} // namespace stillwick::testing
