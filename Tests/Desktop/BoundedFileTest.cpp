#include "Desktop/BoundedFile.h"

#include "Desktop/DesktopError.h"
#include "ForkedChild.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stillwick {
namespace {

using Category = DesktopError::Category;

class BoundedFileTest : public testing::Test {
protected:
    BoundedFileTest() { ::chmod(m_folder.path().toUtf8().constData(), 0755); }

    std::string path(const std::string& name = {}) const {
        return m_folder.path().toStdString() + '/' + name;
    }
    void put(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }

private:
    QTemporaryDir m_folder;
};

QByteArray read(const std::string& path, qint64 mostBytes) {
    return readFile(QString::fromStdString(path), mostBytes);
}

/// The user's words for what stood in the way, or "ok".
std::string obstacle(const std::string& path) {
    try {
        (void)read(path, 10);
        return "ok";
    } catch (const DesktopError& error) {
        return error.description().toStdString();
    }
}

TEST_F(BoundedFileTest, AllIsReadUpToTheBound) {
    put("a", std::string("x\0yz", 4));
    EXPECT_EQ(read(path("a"), 100), QByteArray("x\0yz", 4));
    EXPECT_EQ(read(path("a"), 4), QByteArray("x\0yz", 4));
    EXPECT_EQ(read(path("a"), 3), QByteArray("x\0y", 3));
    EXPECT_EQ(read(path("a"), 0), QByteArray());
    put("b", {});
    EXPECT_EQ(read(path("b"), 100), QByteArray());
    put("c", std::string(5'000'000, 'x'));
    EXPECT_TRUE(read(path("c"), 6'000'000) == QByteArray(5'000'000, 'x'));
}

TEST_F(BoundedFileTest, ALinkIsFollowed) {
    put("a", "x");
    ASSERT_EQ(::symlink("a", path("link").c_str()), 0);
    EXPECT_EQ(read(path("link"), 100), "x");
}

TEST_F(BoundedFileTest, WhatIsNoFileIsToldWithoutWaiting) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0644), 0);
    for (const std::string& odd : {path("pipe"), path(), std::string("/dev/zero")})
        EXPECT_EQ(obstacle(odd), "Ce n'est pas un fichier, mais un dossier ou un périphérique.");
}

TEST_F(BoundedFileTest, WhatIsNotThereIsTold) {
    put("a", "x");
    EXPECT_EQ(obstacle(path("b")), "Le fichier n'existe pas.");
    EXPECT_EQ(obstacle(path("a/b")), "Le fichier n'existe pas.");
    EXPECT_EQ(obstacle(path(std::string(300, 'x'))), "Le nom du fichier est trop long.");
    EXPECT_EQ(obstacle(""), "Le nom du fichier n'est pas valable.");
    EXPECT_EQ(obstacle(std::string("a\0b", 3)), "Le nom du fichier n'est pas valable.");
}

TEST_F(BoundedFileTest, AFileThatMayNotBeReadIsTold) {
    put("a", "x");
    ASSERT_EQ(::chmod(path("a").c_str(), 0200), 0);
    const auto report = inChild([this] {
        becomeNobody();
        return obstacle(path("a"));
    });
    EXPECT_EQ(report, "Vous n'avez pas le droit de lire ce fichier.");
}

TEST_F(BoundedFileTest, TooManyOpenFilesAreTold) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself needs files for looking at objects";
#endif
    put("a", "x");
    const auto report = inChild([this] {
        const rlimit limit{3, 3};
        ::setrlimit(RLIMIT_NOFILE, &limit);
        return obstacle(path("a"));
    });
    EXPECT_EQ(report, "La mémoire ou le nombre de fichiers ouverts ne suffit pas.");
}

TEST_F(BoundedFileTest, OtherCausesAreToldInWordsOfReading) {
    EXPECT_EQ(DesktopError::fromErrnoOfReading(EDOM).category(), Category::ReadFailed);
    EXPECT_EQ(DesktopError::fromErrnoOfReading(EDOM).description(),
              "Le fichier n'a pas pu être lu.");
    EXPECT_EQ(DesktopError::fromErrnoOfReading(EIO).description(),
              "Le disque a signalé une erreur.");
}

} // namespace
} // namespace stillwick
