#include "ClipFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string_view>

namespace stillwick {
namespace {

constexpr std::uint64_t letters(std::string_view name) {
    std::uint64_t value = 0;
    for (const char letter : name)
        value = value << 8 | static_cast<unsigned char>(letter);
    return value;
}

Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

/// Of the name's ending; those that are not named here are only bytes to us.
Container containerOf(const std::filesystem::path& path) {
    static const std::map<std::string, Container> containers = {
        {".mp4", Container::Boxes},    {".mov", Container::Boxes},     {".3gp", Container::Boxes},
        {".mkv", Container::Elements}, {".webm", Container::Elements}, {".avi", Container::Chunks},
        {".ts", Container::Packets},
    };
    const auto found = containers.find(path.extension().string());
    return found == containers.end() ? Container::Unknown : found->second;
}

/// Whether there is a part of these kinds, each inside the one before.
bool hasPath(const std::vector<FilmPart>& parts, std::initializer_list<std::uint64_t> kinds) {
    const std::vector<FilmPart>* level = &parts;
    for (const std::uint64_t kind : kinds) {
        const auto found = std::ranges::find(*level, kind, &FilmPart::kind);
        if (found == level->end())
            return false;
        level = &found->parts;
    }
    return true;
}

TEST(FilmPartsTest, EveryClipIsPutTogetherAsItWas) {
    const auto paths = clipPaths();
    EXPECT_GE(paths.size(), 60U);
    for (const auto& path : paths) {
        const Bytes film = bytesOf(path);
        const Film parts = takeApart(film);
        EXPECT_EQ(parts.container, containerOf(path)) << path;
        EXPECT_TRUE(putTogether(parts) == film) << path;
    }
}

TEST(FilmPartsTest, WhateverBytesFollowTheFirstOnesArePutTogetherAsTheyWere) {
    std::mt19937 random(3);
    for (const auto& path : clipPaths()) {
        Bytes film = bytesOf(path);
        constexpr std::size_t head = 16;
        film.resize(std::min<std::size_t>(film.size(), 3000));
        for (int round = 0; round < 20; ++round) {
            for (std::size_t i = head; i < film.size(); i += 1 + random() % 200)
                film[i] = std::uint8_t(random());
            EXPECT_TRUE(putTogether(takeApart(film)) == film) << path << ' ' << round;
        }
    }
}

TEST(FilmPartsTest, TheSizesAndChecksumsOfWholeClipsAreTrue) {
    for (const char* name : {"closed_h264.mp4", "prores.mov", "fragmented.mp4", "closed_h264.mkv",
                             "alternate_vp9.webm", "no_index.mkv", "closed_h264.avi", "mjpeg.avi",
                             "closed_h264.ts", "interlaced_mpeg2.ts"}) {
        const Film whole = takeApart(clip(name));
        Film film = whole;
        makeConsistent(film);
        EXPECT_TRUE(film == whole) << name;
    }
}

TEST(FilmPartsTest, PartsAreFoundInsideParts) {
    EXPECT_TRUE(hasPath(takeApart(clip("closed_h264.mp4")).parts,
                        {letters("moov"), letters("trak"), letters("mdia"), letters("minf"),
                         letters("stbl"), letters("stsd"), letters("avc1"), letters("avcC")}));
    constexpr std::uint64_t segment = 0x18538067;
    EXPECT_TRUE(hasPath(takeApart(clip("closed_h264.mkv")).parts,
                        {segment, 0x1654AE6B, 0xAE, 0xE0, 0xB0})); // a track's width
    EXPECT_TRUE(hasPath(takeApart(clip("closed_h264.avi")).parts,
                        {letters("RIFF"), letters("LIST"), letters("LIST"), letters("strf")}));
    EXPECT_TRUE(hasPath(takeApart(clip("closed_h264.ts")).parts, {0x1000})); // its map of streams
}

TEST(FilmPartsTest, APacketIsAPartOfItsOwn) {
    const Bytes film = clip("closed_h264.ts");
    EXPECT_EQ(takeApart(film).parts.size(), film.size() / 188);
}

TEST(FilmPartsTest, ABoxMayHaveALargeSizeOrGoOnToTheEnd) {
    using namespace std::string_view_literals;
    const Film film = takeApart(bytes("\0\0\0\1free\0\0\0\0\0\0\0\x13"
                                      "abc"
                                      "\0\0\0\0mdatdef"sv));
    ASSERT_EQ(film.parts.size(), 2U);
    EXPECT_EQ(film.parts[0].head.size(), 16U);
    EXPECT_EQ(film.parts[0].content, bytes("abc"));
    EXPECT_EQ(film.parts[1].content, bytes("def"));
}

TEST(FilmPartsTest, ABoxThatIsCutOffHasWhatIsLeft) {
    using namespace std::string_view_literals;
    const Film film = takeApart(bytes("\0\0\x10\0mdatabc"sv));
    ASSERT_EQ(film.parts.size(), 1U);
    EXPECT_EQ(film.parts[0].content, bytes("abc"));
}

TEST(FilmPartsTest, WhatIsNoBoxIsLoose) {
    using namespace std::string_view_literals;
    const Film film = takeApart(bytes("\0\0\0\x09"
                                      "freea\0\0\0\7moov"sv));
    ASSERT_EQ(film.parts.size(), 2U);
    EXPECT_EQ(film.parts[1].head, Bytes());
    EXPECT_EQ(film.parts[1].content, bytes("\0\0\0\7moov"sv));
}

TEST(FilmPartsTest, SizesAreMadeTrueUpToTheTop) {
    using namespace std::string_view_literals;
    Film film = takeApart(bytes("\0\0\0\x14moov\0\0\0\x0C"
                                "mvhdabcd"sv));
    film.parts[0].parts[0].content = bytes("abcdef");
    makeConsistent(film);
    EXPECT_EQ(putTogether(film), bytes("\0\0\0\x16moov\0\0\0\x0E"
                                       "mvhdabcdef"sv));
}

TEST(FilmPartsTest, AnElementKeepsTheWidthOfItsSize) {
    using namespace std::string_view_literals;
    // Of two elements inside, the first has its size in one byte, the second in three.
    Film film = takeApart(bytes("\x1A\x45\xDF\xA3\x89\x42\x86\x81"
                                "a\xEC\x20\0\1b"sv));
    ASSERT_EQ(film.parts.size(), 1U);
    ASSERT_EQ(film.parts[0].parts.size(), 2U);
    film.parts[0].parts[1].content = bytes("bcd");
    makeConsistent(film);
    EXPECT_EQ(putTogether(film), bytes("\x1A\x45\xDF\xA3\x8B\x42\x86\x81"
                                       "a\xEC\x20\0\3bcd"sv));
}

TEST(FilmPartsTest, AnElementOfOpenSizeStaysOpen) {
    using namespace std::string_view_literals;
    Film film = takeApart(bytes("\x1A\x45\xDF\xA3\xFF\x42\x86\x81"
                                "a\xEC\x81"
                                "b"sv));
    ASSERT_EQ(film.parts[0].parts.size(), 2U);
    film.parts[0].parts.pop_back();
    makeConsistent(film);
    EXPECT_EQ(putTogether(film), bytes("\x1A\x45\xDF\xA3\xFF\x42\x86\x81"
                                       "a"sv));
}

TEST(FilmPartsTest, AChunkOfOddSizeIsFollowedByALooseByte) {
    using namespace std::string_view_literals;
    const Film film = takeApart(bytes("RIFF\x10\0\0\0AVI JUNK\3\0\0\0abc\0"sv));
    ASSERT_EQ(film.parts.size(), 1U);
    EXPECT_EQ(film.parts[0].content, bytes("AVI "));
    ASSERT_EQ(film.parts[0].parts.size(), 2U);
    EXPECT_EQ(film.parts[0].parts[0].content, bytes("abc"));
    EXPECT_EQ(film.parts[0].parts[1].content, bytes("\0"sv));
}

TEST(FilmPartsTest, TheChecksumOfATableIsMadeRightAgain) {
    const Film whole = takeApart(clip("closed_h264.ts"));
    Film film = whole;
    const auto table = std::ranges::find(film.parts, 0x1000U, &FilmPart::kind);
    ASSERT_NE(table, film.parts.end());
    const std::size_t length = std::size_t(table->content[2] & 0x0F) << 8 | table->content[3];
    table->content[1 + 3 + length - 1] ^= 0xFF; // its last byte, after the pointer and the head
    ASSERT_FALSE(film == whole);
    makeConsistent(film);
    EXPECT_TRUE(film == whole);
}

TEST(FilmPartsTest, AHeadClaimsWhatItIsTold) {
    using namespace std::string_view_literals;
    FilmPart box{letters("free"),
                 bytes("\0\0\0\x0C"
                       "free"sv),
                 bytes("abcd"),
                 {}};
    claimSize(Container::Boxes, box, 0x10000);
    claimKind(Container::Boxes, box, letters("moov"));
    EXPECT_EQ(box.head, bytes("\0\1\0\x08moov"sv));
    FilmPart element{0xEC, bytes("\xEC\x84"sv), bytes("abcd"), {}};
    claimSize(Container::Elements, element, 0x1F2); // as much as seven bits hold
    claimKind(Container::Elements, element, 0x4286);
    EXPECT_EQ(element.head, bytes("\x42\x86\xF2"sv));
    FilmPart chunk{letters("JUNK"), bytes("JUNK\4\0\0\0"sv), bytes("abcd"), {}};
    claimSize(Container::Chunks, chunk, 0x102);
    claimKind(Container::Chunks, chunk, letters("idx1"));
    EXPECT_EQ(chunk.head, bytes("idx1\2\1\0\0"sv));
    FilmPart packet{0x100, bytes("\x47\x41\x00\x10"sv), bytes("abcd"), {}};
    claimKind(Container::Packets, packet, 0x0011);
    EXPECT_EQ(packet.head, bytes("\x47\x40\x11\x10"sv));
}

} // namespace
} // namespace stillwick
