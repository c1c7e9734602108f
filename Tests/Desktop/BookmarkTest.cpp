#include "Desktop/Bookmark.h"

#include "ForkedChild.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QTemporaryDir>

#include <fstream>
#include <random>

#include <sys/stat.h>
#include <unistd.h>

namespace stillwick {
namespace {

class BookmarkTest : public testing::Test {
protected:
    /// The path of a new file in an empty folder.
    QByteArray file(const QByteArray& name) const {
        QByteArray path = m_folder.path().toUtf8() + '/' + name;
        EXPECT_TRUE(std::ofstream(path.toStdString()) << "x");
        return path;
    }
    QByteArray folder() const { return m_folder.path().toUtf8(); }
    /// What a bookmark of the path leads to.
    static std::optional<QByteArray> foundAgain(const QByteArray& path) {
        return resolveBookmark(makeBookmark(path).value());
    }

private:
    QTemporaryDir m_folder;
};

/// The documented form, put together by hand.
QByteArray handmade(const QByteArray& path, char version = 1) {
    return "swbm" + QByteArray(1, version) +
           QCryptographicHash::hash(path, QCryptographicHash::Sha256).first(8) + path;
}

TEST_F(BookmarkTest, AFileAndAFolderAreFoundAgain) {
    const QByteArray film = file("film.mp4");
    EXPECT_EQ(foundAgain(film), film);
    EXPECT_EQ(foundAgain(folder()), folder());
    EXPECT_EQ(foundAgain("/"), "/");
}

TEST_F(BookmarkTest, TheBytesAreAsDocumented) {
    EXPECT_EQ(makeBookmark("/a/film.mp4"), handmade("/a/film.mp4"));
}

TEST_F(BookmarkTest, EveryByteButNulMayStandInTheName) {
    QByteArray name;
    for (int byte = 1; byte < 256; ++byte)
        if (byte != '/')
            name += char(byte);
    for (const QByteArray& part : {name.first(127), name.sliced(127)}) {
        const QByteArray path = file(part);
        EXPECT_EQ(foundAgain(path), path);
        ::unlink(path.constData()); // which the folder's owner could not name
    }
    EXPECT_EQ(makeBookmark(QByteArray("/a\0b", 4)), std::nullopt);
    EXPECT_EQ(makeBookmark(""), std::nullopt);
}

TEST_F(BookmarkTest, ARelativePathIsFoundFromElsewhere) {
    const QByteArray film = file("film.mp4");
    const auto report = inChild([&]() -> std::string {
        if (::chdir(folder().constData()) != 0)
            return "no chdir";
        const auto bookmark = makeBookmark("film.mp4");
        if (::chdir("/") != 0 || !bookmark)
            return "no bookmark";
        return resolveBookmark(*bookmark).value_or("none").toStdString();
    });
    EXPECT_EQ(report, film.toStdString());
}

TEST_F(BookmarkTest, WhatIsNotThereHasABookmarkThatLeadsToItOnceItIs) {
    const auto bookmark = makeBookmark(folder() + "/film.mp4");
    EXPECT_EQ(resolveBookmark(bookmark.value()), std::nullopt);
    const QByteArray film = file("film.mp4");
    EXPECT_EQ(resolveBookmark(*bookmark), film);
}

TEST_F(BookmarkTest, AMovedOrDeletedTargetLeadsToNothing) {
    const QByteArray film = file("film.mp4");
    const QByteArray bookmark = makeBookmark(film).value();
    ASSERT_EQ(::rename(film.constData(), (folder() + "/other.mp4").constData()), 0);
    EXPECT_EQ(resolveBookmark(bookmark), std::nullopt);
    file("film.mp4");
    EXPECT_EQ(resolveBookmark(bookmark), film);
    ASSERT_EQ(::unlink(film.constData()), 0);
    EXPECT_EQ(resolveBookmark(bookmark), std::nullopt);
}

TEST_F(BookmarkTest, ALinkLeadsThereByItsOwnPathAndADeadOneNowhere) {
    const QByteArray film = file("film.mp4");
    const QByteArray link = folder() + "/link";
    ASSERT_EQ(::symlink("film.mp4", link.constData()), 0);
    EXPECT_EQ(foundAgain(link), link);
    ASSERT_EQ(::unlink(film.constData()), 0);
    EXPECT_EQ(foundAgain(link), std::nullopt);
}

TEST_F(BookmarkTest, PipesAndDevicesAreNoTarget) {
    const QByteArray pipe = folder() + "/pipe";
    ASSERT_EQ(::mkfifo(pipe.constData(), 0644), 0);
    EXPECT_EQ(foundAgain(pipe), std::nullopt);
    EXPECT_EQ(foundAgain("/dev/zero"), std::nullopt);
}

TEST_F(BookmarkTest, EveryDamageOfOneByteAndEveryCutLeadsToNothing) {
    // Each cut of this path but the last names a folder that is there.
    const QByteArray film = file("film.mp4");
    const QByteArray bookmark = makeBookmark(film).value();
    for (qsizetype length = 0; length < bookmark.size(); ++length)
        EXPECT_EQ(resolveBookmark(bookmark.first(length)), std::nullopt) << length;
    for (qsizetype at = 0; at < bookmark.size(); ++at)
        for (int change = 1; change < 256; ++change) {
            QByteArray damaged = bookmark;
            damaged[at] = char(damaged[at] ^ change);
            ASSERT_EQ(resolveBookmark(damaged), std::nullopt) << at;
        }
    EXPECT_EQ(resolveBookmark(bookmark + '/'), std::nullopt);
}

TEST_F(BookmarkTest, ForeignBytesLeadToNothing) {
    const QByteArray film = file("film.mp4");
    EXPECT_EQ(resolveBookmark({}), std::nullopt);
    EXPECT_EQ(resolveBookmark(film), std::nullopt);
    EXPECT_EQ(resolveBookmark("book" + film), std::nullopt);
    EXPECT_EQ(resolveBookmark(handmade(film, 2)), std::nullopt);
    std::mt19937 random(5);
    for (int round = 0; round < 1000; ++round) {
        QByteArray bytes(qsizetype(random() % 100), '\0');
        for (char& byte : bytes)
            byte = char(random());
        EXPECT_EQ(resolveBookmark(bytes), std::nullopt);
    }
}

// A check that fits proves nothing: whoever writes a project can work it out.
TEST_F(BookmarkTest, HandmadeBookmarksLeadToNothingButAbsolutePaths) {
    EXPECT_EQ(resolveBookmark(handmade(folder())), folder());
    EXPECT_EQ(resolveBookmark(handmade(".")), std::nullopt);
    EXPECT_EQ(resolveBookmark(handmade("concat:/etc/passwd")), std::nullopt);
    EXPECT_EQ(resolveBookmark(handmade("http://localhost/")), std::nullopt);
    EXPECT_EQ(resolveBookmark(handmade(folder() + QByteArray("\0x", 2))), std::nullopt);
    EXPECT_EQ(resolveBookmark(handmade("/" + QByteArray(100'000, 'x'))), std::nullopt);
}

} // namespace
} // namespace stillwick
