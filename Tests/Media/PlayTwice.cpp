// play-twice FILM: plays until the clock runs, says so, and once more after each line that it is
// given; ends with its input, in the midst of playing.
#include "Media/SoundPlayer.h"

#include <QCoreApplication>
#include <QTest>

#include <iostream>
#include <string>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const auto clock = std::make_shared<stillwick::PlaybackClock>();
    stillwick::SoundPlayer player(QString::fromLocal8Bit(argc > 1 ? argv[1] : ""), clock);
    std::string line;
    do {
        player.play(std::chrono::seconds(1), std::chrono::seconds(0));
        constexpr int patienceMilliseconds = 10'000;
        if (!QTest::qWaitFor([&] { return clock->isRunning(); }, patienceMilliseconds))
            return 1;
        std::cout << "running" << std::endl;
    } while (std::getline(std::cin, line));
    return 7;
}
