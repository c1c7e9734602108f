#include "ClipFiles.h"

#include "Fuzz/FilmDamage.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace stillwick {
namespace {

constexpr std::size_t roomy = 2'000'000;

TEST(FilmDamageTest, TheSameSeedGivesTheSameFilm) {
    for (const auto& path : clipPaths()) {
        const Bytes film = bytesOf(path);
        EXPECT_TRUE(damagedFilm(film, roomy, 7) == damagedFilm(film, roomy, 7)) << path;
    }
}

TEST(FilmDamageTest, SeedsGiveFilmsOfTheirOwn) {
    const Bytes film = clip("one_picture.mp4");
    std::set<std::string> films;
    constexpr std::uint32_t seeds = 200;
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const Bytes damaged = damagedFilm(film, roomy, seed);
        films.emplace(damaged.begin(), damaged.end());
    }
    EXPECT_GE(films.size(), seeds * 9 / 10);
}

TEST(FilmDamageTest, ADamagedFilmIsNeverTheFilmNorTooLarge) {
    for (const auto& path : clipPaths()) {
        const Bytes film = bytesOf(path);
        for (std::uint32_t seed = 0; seed < 12; ++seed) {
            const std::size_t largest = seed % 2 == 0 ? film.size() : film.size() / 2;
            const Bytes damaged = damagedFilm(film, largest, seed);
            EXPECT_LE(damaged.size(), largest) << path << ' ' << seed;
            EXPECT_FALSE(damaged == film) << path << ' ' << seed;
        }
    }
}

TEST(FilmDamageTest, ThereIsDamageToNothingAndToNextToNothing) {
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        EXPECT_EQ(damagedFilm({}, 1, seed).size(), 1U);
        for (const Bytes& film :
             {Bytes{0x47}, Bytes{0, 0, 0, 0, 'm', 'o', 'o', 'v'},
              Bytes{0x1A, 0x45, 0xDF, 0xA3, 0xFF, 0, 0, 0}, Bytes{'R', 'I', 'F', 'F', 0, 0, 0, 0}})
            EXPECT_NE(damagedFilm(film, 64, seed), film) << seed;
    }
}

TEST(FilmDamageTest, DamageUponDamageStaysWithinItsBound) {
    for (const char* name : {"one_picture.mp4", "closed_h264.mkv", "closed_h264.avi", "cut.ts"}) {
        Bytes film = clip(name);
        const std::size_t largest = 2 * film.size();
        for (std::uint32_t seed = 0; seed < 200 && !film.empty(); ++seed) {
            film = damagedFilm(film, largest, seed);
            ASSERT_LE(film.size(), largest) << name << ' ' << seed;
        }
    }
}

TEST(FilmDamageTest, MostlyTheFilmCanStillBeTakenApart) {
    const Film whole = takeApart(clip("closed_h264.mp4"));
    int readable = 0;
    constexpr int seeds = 200;
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const Film damaged = takeApart(damagedFilm(putTogether(whole), roomy, seed));
        readable += damaged.container == whole.container && damaged.parts.size() >= 2 ? 1 : 0;
    }
    EXPECT_GE(readable, seeds / 2);
}

TEST(FilmDamageTest, PlainBytesAreChangedByWhoeverIsAskedTo) {
    int asked = 0;
    const ByteDamage toOnes = [&asked](std::uint8_t* data, std::size_t size, std::size_t room) {
        ++asked;
        EXPECT_LE(size, room);
        std::fill_n(data, room, std::uint8_t(1));
        return room;
    };
    const Bytes text(100, 'a'); // no container that is known
    EXPECT_EQ(damagedFilm(text, 50, 1, toOnes).size() <= 50, true);
    EXPECT_EQ(asked, 1);
    const Bytes film = clip("one_picture.mp4");
    for (std::uint32_t seed = 0; seed < 100; ++seed)
        EXPECT_FALSE(damagedFilm(film, roomy, seed, toOnes) == film);
    EXPECT_GT(asked, 5);
}

} // namespace
} // namespace stillwick
