// Random access to every clip that the tests make, and to every real film at hand, compared with a
// linear decode. One test per film.
#include "Proof.h"
#include "Reference.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include <cctype>
#include <ostream>
#include <string>

namespace stillwick::testing {

namespace {

// The whole proof takes every frame; see prove-all. Sanitizers make it ten times slower.
#ifdef __SANITIZE_ADDRESS__
constexpr int framesPerClip = 6;
constexpr int framesPerRealFilm = 1;
#else
constexpr int framesPerClip = 40;
constexpr int framesPerRealFilm = 5;
#endif

struct Film {
    QString path;
    int frames = 0;
};

std::ostream& operator<<(std::ostream& stream, const Film& film) {
    return stream << film.path.toStdString();
}

std::vector<Film> films(const QString& folder, int frames) {
    std::vector<Film> result;
    for (const QString& path : filmsIn(folder))
        result.push_back({path, frames});
    return result;
}

std::string nameOf(const ::testing::TestParamInfo<Film>& info) {
    std::string name = QFileInfo(info.param.path).fileName().toStdString();
    for (char& character : name) {
        if (!std::isalnum(static_cast<unsigned char>(character)))
            character = '_';
    }
    return name;
}

/// Only the times of damaged films can be compared: so no others may count as damaged.
bool mayBeDamaged(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    return name.startsWith(QStringLiteral("damaged")) || name.startsWith(QStringLiteral("cut"));
}

class ExactFramesTest : public ::testing::TestWithParam<Film> {};

TEST_P(ExactFramesTest, RandomAccessGivesWhatALinearDecodeGives) {
    const auto& [path, frames] = GetParam();
    const Proof proof = proveFilm(path, frames, 20);
    EXPECT_TRUE(proof.skipped.isEmpty()) << proof.skipped.toStdString();
    EXPECT_TRUE(proof.faults.isEmpty()) << proof.faults.join(QStringLiteral("\n")).toStdString();
    EXPECT_GT(proof.grabs, 0);
    // What was asked before decides where decoding goes on from: so a short history too.
    const Proof brief = proveFilm(path, 1, 3);
    EXPECT_TRUE(brief.faults.isEmpty()) << brief.faults.join(QStringLiteral("\n")).toStdString();
    EXPECT_TRUE(!proof.isDamaged || mayBeDamaged(path));
}

INSTANTIATE_TEST_SUITE_P(Clips, ExactFramesTest,
                         ::testing::ValuesIn(films(QStringLiteral(STILLWICK_CLIPS "/films"),
                                                   framesPerClip)),
                         nameOf);

/// A real film that has no picture is not proved but refused.
bool hasPictures(const Film& film) {
    return !film.path.endsWith(QStringLiteral("/sound_only.mp4"));
}

std::vector<Film> realFilms() {
    std::vector<Film> result =
        films(QStringLiteral(STILLWICK_SHARED_DATA "/films"), framesPerRealFilm);
    std::erase_if(result, [](const Film& film) { return !hasPictures(film); });
    return result;
}

INSTANTIATE_TEST_SUITE_P(RealFilms, ExactFramesTest, ::testing::ValuesIn(realFilms()), nameOf);

TEST(RealFilms, AreAtHand) {
    if (realFilms().empty())
        GTEST_SKIP() << "no films in " STILLWICK_SHARED_DATA "/films";
}

} // namespace

} // namespace stillwick::testing
