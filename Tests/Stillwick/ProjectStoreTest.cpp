#include "Stillwick/ProjectStore.h"

#include "Desktop/DesktopError.h"
#include "ForkedChild.h"
#include "NumberedProject.h"
#include "Stillwick/ProjectError.h"
#include "Stillwick/ProjectJson.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <limits>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stillwick {
namespace {

using testing::loaded;
using testing::namesIn;
using testing::numbered;
using testing::saved;
using testing::urlOf;

class ProjectStoreTest : public ::testing::Test {
protected:
    ProjectStoreTest() { ::chmod(m_folder.path().toUtf8().constData(), 0755); }

    std::string path(const std::string& name = {}) const {
        return m_folder.path().toStdString() + '/' + name;
    }
    void put(const std::string& name, const QByteArray& content) const {
        QFile file(QString::fromStdString(path(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(ProjectStoreTest, WhatIsSavedIsLoaded) {
    ASSERT_EQ(saved(numbered(7, 3), path("été.stillwick")), "ok");
    EXPECT_EQ(ProjectStore::load(urlOf(path("été.stillwick"))), numbered(7, 3));
    ASSERT_EQ(saved(numbered(8), path("été.stillwick")), "ok");
    EXPECT_EQ(ProjectStore::load(urlOf(path("été.stillwick"))), numbered(8));
    EXPECT_EQ(namesIn(path()), "été.stillwick");
}

TEST_F(ProjectStoreTest, AddressesThatAreNoLocalFileAreRefused) {
    for (const char* address : {"", "https://example.org/a.stillwick", "a.stillwick", "qrc:/a"}) {
        EXPECT_THROW(ProjectStore::save(numbered(1), QUrl(QString::fromLatin1(address))),
                     DesktopError);
        EXPECT_THROW((void)ProjectStore::load(QUrl(QString::fromLatin1(address))), DesktopError);
    }
}

TEST_F(ProjectStoreTest, WhatCannotBePutIntoWordsLeavesTheEarlierFile) {
    ASSERT_EQ(saved(numbered(1), path("a")), "ok");
    ProjectFile project = numbered(2);
    project.edge.shrink = std::numeric_limits<double>::infinity();
    EXPECT_EQ(saved(project, path("a")),
              "Un réglage ou une annotation contient une valeur qui n'est pas un nombre.");
    EXPECT_EQ(loaded(path("a")), "1");
    EXPECT_EQ(namesIn(path()), "a");
}

TEST_F(ProjectStoreTest, EachObstacleToLoadingIsTold) {
    EXPECT_EQ(loaded(path("missing")), "Le fichier n'existe pas.");
    EXPECT_EQ(loaded(path("missing/a")), "Le fichier n'existe pas.");
    EXPECT_EQ(loaded(path()), "Ce n'est pas un fichier, mais un dossier ou un périphérique.");
    EXPECT_EQ(loaded("/dev/zero"), "Ce n'est pas un fichier, mais un dossier ou un périphérique.");
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0644), 0);
    EXPECT_EQ(loaded(path("pipe")), "Ce n'est pas un fichier, mais un dossier ou un périphérique.");
    ASSERT_EQ(::symlink("a", path("a").c_str()), 0);
    EXPECT_EQ(loaded(path("a")), "Le lien symbolique ne mène à aucun fichier.");
    put("empty", {});
    EXPECT_EQ(loaded(path("empty")), "Le fichier est vide.");
    put("other", "{}");
    EXPECT_EQ(loaded(path("other")), "La clé « activeGroupIndex » manque.");
}

TEST_F(ProjectStoreTest, AFileThatMayNotBeReadIsTold) {
    put("a", encodeProject(numbered(1)));
    ASSERT_EQ(::chmod(path("a").c_str(), 0), 0);
    const auto report = inChild([this] {
        becomeNobody();
        return loaded(path("a"));
    });
    EXPECT_EQ(report, "Vous n'avez pas le droit de lire ce fichier.");
}

TEST_F(ProjectStoreTest, AFileOf200MegabytesIsRefusedAtOnce) {
    put("a", encodeProject(numbered(1)));
    ASSERT_EQ(::truncate(path("a").c_str(), 200'000'000), 0);
    EXPECT_EQ(loaded(path("a")), "Le fichier est trop volumineux pour un projet.");
}

/// The most memory that this process has held so far, in MiB.
[[maybe_unused]] long peakMemory() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// The sanitizers need memory of their own for every byte.
#ifndef __SANITIZE_ADDRESS__
TEST_F(ProjectStoreTest, TheMostGreedyFileWithinTheBoundNeedsLessThanAGibibyte) {
    const QByteArray begin = encodeProject(numbered(1)).chopped(3) + ", \"";
    const auto grown = [&](const QByteArray& key, const QByteArray& item) {
        const qsizetype rest = longestProject - begin.size() - 20;
        return begin + key + "\": [" + item.repeated(rest / item.size()).chopped(1) + "]}";
    };
    const QByteArray groups = grown("groups", R"({"name":"","notes":"","frames":[]},)");
    const QByteArray lists = grown("others", "[],");
    for (const QByteArray& text : {groups, lists}) {
        put("a", text);
        const auto report = inChild([&] {
            const long before = peakMemory();
            const std::string number = loaded(path("a"));
            return number + ' ' + std::to_string(peakMemory() - before);
        });
        ASSERT_TRUE(report.starts_with("1 ")) << report;
        EXPECT_LT(std::stol(report.substr(2)), 1024);
    }
}
#endif

TEST_F(ProjectStoreTest, AReadOnlyFolderIsToldAndTheEarlierFileStays) {
    ASSERT_EQ(saved(numbered(1), path("a")), "ok");
    ASSERT_EQ(::chmod(path().c_str(), 0555), 0);
    const auto report = inChild([this] {
        becomeNobody();
        return saved(numbered(2), path("b"));
    });
    ASSERT_EQ(::chmod(path().c_str(), 0755), 0);
    EXPECT_EQ(report, "Le dossier est en lecture seule.");
    EXPECT_EQ(loaded(path("a")), "1");
    EXPECT_EQ(namesIn(path()), "a");
}

TEST_F(ProjectStoreTest, AFullDiskOf64KibibytesIsToldAndTheEarlierFileStays) {
    const auto report = inChild([this]() -> std::string {
        if (const auto obstacle = mountSmallDisk(path(), "64k"); !obstacle.empty())
            return "skip " + obstacle;
        std::string told = saved(numbered(1), path("a")) + ' ';
        told += saved(numbered(2, 1000), path("a")) + ' ';
        told += loaded(path("a")) + ' ' + namesIn(path()) + ' ';
        told += saved(numbered(3), path("a")) + ' ';
        return told + loaded(path("a"));
    });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_EQ(report, "ok Le disque est plein. 1 a ok 3");
}

TEST_F(ProjectStoreTest, ALinkStaysAndItsTargetOnAnotherDiskIsReplaced) {
    const auto report = inChild([this]() -> std::string {
        ::mkdir(path("disk").c_str(), 0755);
        if (const auto obstacle = mountSmallDisk(path("disk"), "64k"); !obstacle.empty())
            return "skip " + obstacle;
        if (::symlink("disk/target", path("link").c_str()) != 0)
            return "no link";
        std::string told = saved(numbered(1), path("link")) + ' ';
        told += saved(numbered(2), path("link")) + ' ';
        told += loaded(path("disk/target")) + ' ' + namesIn(path("disk")) + ' ';
        struct stat status {};
        ::lstat(path("link").c_str(), &status);
        return told + (S_ISLNK(status.st_mode) ? "link" : "no link any more");
    });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_EQ(report, "ok ok 2 target link");
}

TEST_F(ProjectStoreTest, ThePermissionsOfTheEarlierFileAreKept) {
    ASSERT_EQ(saved(numbered(1), path("a")), "ok");
    ASSERT_EQ(::chmod(path("a").c_str(), 0604), 0);
    ASSERT_EQ(saved(numbered(2), path("a")), "ok");
    struct stat status {};
    ASSERT_EQ(::stat(path("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0604U);
}

/// What is found again after a bookmark of it went through a project's text.
std::optional<QUrl> foundAgain(const QUrl& url) {
    ProjectFile project;
    project.videoBookmark = ProjectStore::makeBookmark(url);
    const ProjectFile read = decodeProject(encodeProject(project));
    return read.videoBookmark ? ProjectStore::resolveBookmark(*read.videoBookmark) : std::nullopt;
}

TEST_F(ProjectStoreTest, AFileIsFoundAgainThroughAProject) {
    put("un film d'été 100%.mp4", "x");
    const QUrl film = urlOf(path("un film d'été 100%.mp4"));
    EXPECT_EQ(foundAgain(film), film);
    EXPECT_EQ(foundAgain(urlOf(path("sub/../"))), std::nullopt);
    QFile::remove(film.toLocalFile());
    EXPECT_EQ(foundAgain(film), std::nullopt);
}

TEST_F(ProjectStoreTest, AFileWhoseNameIsNoTextIsFoundAgain) {
    const std::string name = path("\xFF\x80 %41\n");
    ASSERT_EQ(::mkdir(name.c_str(), 0755), 0);
    const QUrl folder =
        QUrl::fromEncoded("file://" + QByteArray::fromStdString(path("%FF%80%20%2541%0A")));
    EXPECT_EQ(foundAgain(folder), folder);
    ::rmdir(name.c_str()); // which the folder's owner could not name
}

TEST_F(ProjectStoreTest, WhatIsNoLocalFileHasNoBookmark) {
    for (const char* address : {"", "https://example.org/film.mp4", "qrc:/film", "data:,film",
                                "file://elsewhere/film.mp4", "file:///tmp/a%00b"})
        EXPECT_EQ(ProjectStore::makeBookmark(QUrl(QString::fromLatin1(address))), std::nullopt)
            << address;
}

} // namespace
} // namespace stillwick
