#include "Media/SoundWindow.h"

#include <gtest/gtest.h>

#include <vector>

namespace stillwick::testing {

namespace {

constexpr int channels = 2;

/// Samples that tell their places: left the place itself, right its negative.
std::vector<float> samplesFrom(std::int64_t start, int frames) {
    std::vector<float> samples;
    for (std::int64_t place = start; place < start + frames; ++place) {
        samples.push_back(float(place));
        samples.push_back(float(-place));
    }
    return samples;
}

void append(SoundWindow& window, std::int64_t start, int frames) {
    window.append(start, samplesFrom(start, frames).data(), frames);
}

std::vector<float> take(SoundWindow& window, std::int64_t start, int frames) {
    std::vector<float> samples(std::size_t(frames) * channels, 99.0F);
    window.take(start, samples.data(), frames);
    return samples;
}

std::vector<float> silence(int frames) {
    return std::vector<float>(std::size_t(frames) * channels, 0.0F);
}

TEST(SoundWindow, GivesWhatWasPutIntoItAroundItsRing) {
    SoundWindow window(channels, 10, 100);
    for (std::int64_t place = 100; place < 200; place += 4) {
        append(window, place, 4);
        EXPECT_EQ(take(window, place, 4), samplesFrom(place, 4));
    }
}

TEST(SoundWindow, AsksForWhatComesNextUntilItIsFull) {
    SoundWindow window(channels, 10, -3);
    EXPECT_EQ(window.need().start, -3);
    EXPECT_EQ(window.need().frames, 10);
    append(window, -3, 7);
    EXPECT_EQ(window.need().start, 4);
    EXPECT_EQ(window.need().frames, 3);
    append(window, 4, 3);
    EXPECT_EQ(window.need().frames, 0);
    EXPECT_EQ(take(window, -3, 10), samplesFrom(-3, 10));
    EXPECT_EQ(window.need().start, 7);
    EXPECT_EQ(window.need().frames, 10);
}

TEST(SoundWindow, IsSilentWhereNothingIsHeldAndGoesOnPastIt) {
    SoundWindow window(channels, 10, 0);
    append(window, 0, 4);
    std::vector<float> expected = samplesFrom(0, 4);
    expected.resize(6 * channels);
    EXPECT_EQ(take(window, 0, 6), expected);
    EXPECT_EQ(window.need().start, 6) << "what was missed is not wanted any more";
}

TEST(SoundWindow, LetsGoOfWhatLiesBeforeTheTaken) {
    SoundWindow window(channels, 10, 0);
    append(window, 0, 10);
    EXPECT_EQ(take(window, 6, 2), samplesFrom(6, 2));
    EXPECT_EQ(window.need().start, 10);
    EXPECT_EQ(window.need().frames, 8);
}

TEST(SoundWindow, StartsAnewWhereItIsMovedOutOfItself) {
    for (const std::int64_t elsewhere : {std::int64_t(50), std::int64_t(-50)}) {
        SoundWindow window(channels, 10, 0);
        append(window, 0, 10);
        window.moveTo(elsewhere);
        EXPECT_EQ(window.need().start, elsewhere);
        EXPECT_EQ(window.need().frames, 10);
        append(window, 10, 5); // decoded for where it was
        EXPECT_EQ(take(window, elsewhere, 5), silence(5));
    }
}

} // namespace

} // namespace stillwick::testing
