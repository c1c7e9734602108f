// Random walks with the player through every clip that the tests make, and every real film at hand.
#include "PlayerWalk.h"
#include "FilmCases.h"

#include <gtest/gtest.h>

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

class PlayerWalkTest : public ::testing::TestWithParam<FilmCase> {};

TEST_P(PlayerWalkTest, WhatIsShownIsWhatIsGrabbed) {
    const auto& [path, operations] = GetParam();
    const PlayerWalk walk = walkThrough(path, operations, 7, mayBeDamaged(path));
    EXPECT_TRUE(walk.faults.isEmpty()) << walk.faults.join(QStringLiteral("\n")).toStdString();
    EXPECT_GT(walk.comparisons, 1);
}

INSTANTIATE_TEST_SUITE_P(Clips, PlayerWalkTest,
                         ::testing::ValuesIn(filmCases(QStringLiteral(STILLWICK_CLIPS "/films"),
                                                       operationsPerClip)),
                         nameOfCase);

INSTANTIATE_TEST_SUITE_P(RealFilms, PlayerWalkTest,
                         ::testing::ValuesIn(realFilmCases(QStringLiteral(STILLWICK_SHARED_DATA
                                                                          "/films"),
                                                           operationsPerRealFilm)),
                         nameOfCase);

TEST(RealFilms, AreAtHandForWalks) {
    if (realFilmCases(QStringLiteral(STILLWICK_SHARED_DATA "/films"), 1).empty())
        GTEST_SKIP() << "no films in " STILLWICK_SHARED_DATA "/films";
}

} // namespace

} // namespace stillwick::testing
