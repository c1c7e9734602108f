// The player where there is no sound server at all.
#include "ClockWatch.h"
#include "SoundClip.h"

#include "Media/SoundPlayer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <iostream>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using SteadyClock = std::chrono::steady_clock;

class SoundPlayerWithoutServer : public ::testing::Test {
protected:
    SoundPlayerWithoutServer() {
        qputenv("XDG_RUNTIME_DIR", m_folder.path().toUtf8());
        qputenv("HOME", m_folder.path().toUtf8());
        qputenv("PULSE_SERVER", "unix:/nowhere");
        ffmpeg(QStringLiteral("-f lavfi -i testsrc2=s=64x48:r=25:d=5 -f lavfi -i "
                              "sine=440:d=5 -c:v mpeg4 -c:a aac ") +
               m_film);
    }

    QTemporaryDir m_folder;
    QString m_film = m_folder.filePath(QStringLiteral("film.mp4"));
    std::shared_ptr<PlaybackClock> m_clock = std::make_shared<PlaybackClock>();
    ClockWatch m_watch{*m_clock};
};

TEST_F(SoundPlayerWithoutServer, RunsAtOnceByTheWallClock) {
    SoundPlayer player(m_film, m_clock);
    nanoseconds fastest = 1h;
    SteadyTime started;
    for (int i = 0; i < 5; ++i) {
        const SteadyTime called = SteadyClock::now();
        player.play(1s, 0ns);
        ASSERT_TRUE(m_watch.watchUntil([&] { return m_clock->isRunning(); }));
        started = m_clock->steadyTimeOf(1s);
        fastest = std::min(fastest, nanoseconds(started - called));
    }
    std::cout << "[ measured ] runs " << double(fastest.count()) / 1e6 << " ms after play\n";
    EXPECT_LE(fastest, 50ms);
    const SteadyTime running = SteadyClock::now();
    ASSERT_TRUE(m_watch.watchUntil(4s));
    EXPECT_EQ(m_watch.largestDeviation(running), 0ns);
    player.stop();
    EXPECT_FALSE(m_clock->isRunning());
}

TEST_F(SoundPlayerWithoutServer, EndsWithinATenthOfASecond) {
    std::vector<nanoseconds> ends;
    for (int i = 0; i < 20; ++i) {
        auto player = std::make_unique<SoundPlayer>(m_film, m_clock);
        player->play(1s, 0ns);
        if (i % 2 == 0) {
            ASSERT_TRUE(m_watch.watchUntil([&] { return m_clock->isRunning(); }));
        }
        const SteadyTime before = SteadyClock::now();
        player.reset();
        ends.push_back(SteadyClock::now() - before);
        EXPECT_FALSE(m_clock->isRunning());
    }
    std::sort(ends.begin(), ends.end());
    EXPECT_LE(ends[ends.size() * 9 / 10], 100ms);
}

} // namespace

} // namespace stillwick::testing
