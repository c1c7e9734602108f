// Random walks with the player through every clip that the tests make, and every real film at hand.
#include "PlayerWalk.h"
#include "Reference.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include <cctype>
#include <ostream>
#include <string>

namespace stillwick::testing {

namespace {

// Sanitizers make it ten times slower; walk-films takes as many as one likes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int operationsPerClip = 40;
constexpr int operationsPerRealFilm = 15;
#else
constexpr int operationsPerClip = 150;
constexpr int operationsPerRealFilm = 500;
#endif

struct Film {
    QString path;
    int operations = 0;
};

std::ostream& operator<<(std::ostream& stream, const Film& film) {
    return stream << film.path.toStdString();
}

std::string nameOf(const ::testing::TestParamInfo<Film>& info) {
    std::string name = QFileInfo(info.param.path).fileName().toStdString();
    for (char& character : name) {
        if (!std::isalnum(static_cast<unsigned char>(character)))
            character = '_';
    }
    return name;
}

std::vector<Film> films(const QString& folder, int operations) {
    std::vector<Film> result;
    for (const QString& path : filmsIn(folder)) {
        if (!path.endsWith(QStringLiteral("/sound_only.mp4")))
            result.push_back({path, operations});
    }
    return result;
}

class PlayerWalkTest : public ::testing::TestWithParam<Film> {};

TEST_P(PlayerWalkTest, WhatIsShownIsWhatIsGrabbed) {
    const auto& [path, operations] = GetParam();
    const QString name = QFileInfo(path).fileName();
    // The linear decode of these meets errors: what concealment makes is not repeatable.
    const bool isDamaged =
        name.startsWith(QStringLiteral("damaged")) || name.startsWith(QStringLiteral("cut"));
    const PlayerWalk walk = walkThrough(path, operations, 7, isDamaged);
    EXPECT_TRUE(walk.faults.isEmpty()) << walk.faults.join(QStringLiteral("\n")).toStdString();
    EXPECT_GT(walk.comparisons, 1);
}

INSTANTIATE_TEST_SUITE_P(Clips, PlayerWalkTest,
                         ::testing::ValuesIn(films(QStringLiteral(STILLWICK_CLIPS "/films"),
                                                   operationsPerClip)),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(RealFilms, PlayerWalkTest,
                         ::testing::ValuesIn(films(QStringLiteral(STILLWICK_SHARED_DATA "/films"),
                                                   operationsPerRealFilm)),
                         nameOf);

TEST(RealFilms, AreAtHandForWalks) {
    if (films(QStringLiteral(STILLWICK_SHARED_DATA "/films"), 1).empty())
        GTEST_SKIP() << "no films in " STILLWICK_SHARED_DATA "/films";
}

} // namespace

} // namespace stillwick::testing
