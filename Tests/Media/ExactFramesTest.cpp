// Random access to every clip that the tests make, and to every real film at hand, compared with a
// linear decode. One test per film.
#include "FilmCases.h"
#include "Proof.h"

#include <gtest/gtest.h>

namespace stillwick::testing {

namespace {

// The whole proof takes every frame; see prove-all. Sanitizers make it ten times slower.
#ifdef __SANITIZE_ADDRESS__
constexpr int framesPerClip = 6;
constexpr int framesPerRealFilm = 1;
constexpr bool alsoWithShortHistory = false;
#else
constexpr int framesPerClip = 40;
constexpr int framesPerRealFilm = 5;
constexpr bool alsoWithShortHistory = true;
#endif

class ExactFramesTest : public ::testing::TestWithParam<FilmCase> {};

TEST_P(ExactFramesTest, RandomAccessGivesWhatALinearDecodeGives) {
    const auto& [path, frames] = GetParam();
    const Proof proof = proveFilm(path, frames, 20);
    EXPECT_TRUE(proof.skipped.isEmpty()) << proof.skipped.toStdString();
    EXPECT_TRUE(proof.faults.isEmpty()) << proof.faults.join(QStringLiteral("\n")).toStdString();
    EXPECT_GT(proof.grabs, 0);
    // Only the times of damaged films can be compared: so no others may count as damaged.
    EXPECT_TRUE(!proof.isDamaged || mayBeDamaged(path));
    if (!alsoWithShortHistory)
        return;
    // What was asked before decides where decoding goes on from.
    const Proof brief = proveFilm(path, 1, 3);
    EXPECT_TRUE(brief.faults.isEmpty()) << brief.faults.join(QStringLiteral("\n")).toStdString();
}

INSTANTIATE_TEST_SUITE_P(Clips, ExactFramesTest,
                         ::testing::ValuesIn(filmCases(QStringLiteral(STILLWICK_CLIPS "/films"),
                                                       framesPerClip)),
                         nameOfCase);

std::vector<FilmCase> realFilms() {
    return realFilmCases(QStringLiteral(STILLWICK_SHARED_DATA "/films"), framesPerRealFilm);
}

INSTANTIATE_TEST_SUITE_P(RealFilms, ExactFramesTest, ::testing::ValuesIn(realFilms()), nameOfCase);

TEST(RealFilms, AreAtHand) {
    if (realFilms().empty())
        GTEST_SKIP() << "no films in " STILLWICK_SHARED_DATA "/films";
}

} // namespace

} // namespace stillwick::testing
