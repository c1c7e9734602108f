// A player before a film, as whoever drives it sees it. Main thread.
#pragma once

#include "EventLoop.h"

#include "Media/ImageGenerator.h"
#include "Media/MediaAsset.h"
#include "Media/MediaPlayer.h"

#include <gtest/gtest.h>

#include <memory>

namespace stillwick::testing {

// 90 pictures, 30 a second, a key picture every 24.
inline const auto film = QStringLiteral(STILLWICK_CLIPS "/films/closed_h264.mp4");
// One group of pictures, which takes long to decode.
inline const auto longFilm = QStringLiteral(STILLWICK_CLIPS "/long/one_group.mp4");

/// Times of `film`: when a frame begins, and half-way to the next.
inline CMTime frameTime(std::int64_t frame) {
    return CMTime::make(frame, 30);
}
inline CMTime middleOf(std::int64_t frame) {
    return CMTime::make(2 * frame + 1, 60);
}

class PlayerFixture : public ::testing::Test {
protected:
    PlayerFixture() { application(); }

    void open(const QString& path) {
        asset = std::make_shared<MediaAsset>(path);
        item = std::make_shared<MediaPlayerItem>(asset);
        player.replaceCurrentItem(item);
        ASSERT_TRUE(runUntil([this] { return !player.picture().isNull(); }));
    }

    void seekTo(const CMTime& time) {
        player.seek(time, CMTime::zero(), CMTime::zero());
        settle();
    }

    void stepBy(int count) {
        item->step(count);
        settle();
    }

    void settle() {
        ASSERT_TRUE(runUntil([this] { return !player.isSeeking(); }));
    }

    [[nodiscard]] static QImage pictureAt(const QString& path, const CMTime& time) {
        ImageGenerator generator(std::make_shared<MediaAsset>(path));
        generator.setAppliesPreferredTrackTransform(true);
        generator.setRequestedTimeToleranceBefore(CMTime::zero());
        generator.setRequestedTimeToleranceAfter(CMTime::zero());
        return generator.generateImage(time).image;
    }

    std::shared_ptr<MediaAsset> asset;
    std::shared_ptr<MediaPlayerItem> item;
    MediaPlayer player;
};

} // namespace stillwick::testing
