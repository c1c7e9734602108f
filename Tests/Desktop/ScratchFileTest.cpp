// Disk space without a name.
#include "Desktop/ScratchFile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <sys/mount.h>
#include <unistd.h>

namespace stillwick::testing {

namespace {

constexpr qint64 plenty = qint64(1) << 30;

TEST(ScratchFile, BytesComeBack) {
    const QTemporaryDir folder;
    const auto file = ScratchFile::create({folder.path()}, plenty);
    ASSERT_NE(file, nullptr);
    const QByteArray first(10'000, 'a');
    const QByteArray second(3, 'b');
    const auto firstRange = file->append(first);
    const auto secondRange = file->append(second);
    ASSERT_TRUE(firstRange && secondRange);
    EXPECT_EQ(file->read(*secondRange), second);
    EXPECT_EQ(file->read(*firstRange), first);
}

TEST(ScratchFile, NoFolderListsIt) {
    const QTemporaryDir folder;
    const auto file = ScratchFile::create({folder.path()}, plenty);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->append("content"));
    EXPECT_TRUE(
        QDir(folder.path())
            .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
}

TEST(ScratchFile, ItsSpaceIsFreeAgainWhenDiscarded) {
    const QTemporaryDir folder;
    const auto file = ScratchFile::create({folder.path()}, plenty);
    ASSERT_NE(file, nullptr);
    const auto first = file->append(QByteArray(100'000, 'a'));
    const auto second = file->append(QByteArray(5'000, 'b'));
    ASSERT_TRUE(first && second);
    EXPECT_GE(file->used(), 105'000);
    file->discard(*first);
    EXPECT_LE(file->used(), 8'192);
    EXPECT_EQ(file->read(*second), QByteArray(5'000, 'b'));
}

TEST(ScratchFile, MoreThanItMayTakeIsRefused) {
    const QTemporaryDir folder;
    const auto file = ScratchFile::create({folder.path()}, 24'000);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->append(QByteArray(10'000, 'a')));
    EXPECT_FALSE(file->append(QByteArray(10'000, 'b')));
    EXPECT_TRUE(file->append(QByteArray(5'000, 'c')));
}

TEST(ScratchFile, AFolderThatDoesNotAllowItIsPassedOver) {
    const QTemporaryDir folder;
    EXPECT_EQ(ScratchFile::create({folder.filePath(QStringLiteral("missing"))}, plenty), nullptr);
    EXPECT_NE(ScratchFile::create({QStringLiteral("/proc"), folder.path()}, plenty), nullptr);
}

TEST(ScratchFile, AnAlmostFullDiskIsLeftItsLastEighth) {
    const QTemporaryDir folder;
    const QByteArray path = folder.path().toLocal8Bit();
    if (::mount("none", path.constData(), "tmpfs", 0, "size=1m") != 0)
        GTEST_SKIP() << "no file system may be mounted here";
    {
        const auto file = ScratchFile::create({folder.path()}, plenty);
        ASSERT_NE(file, nullptr);
        int taken = 0;
        while (taken < 100 && file->append(QByteArray(32 << 10, 'x')))
            ++taken;
        EXPECT_GE(taken, 26);
        EXPECT_LE(taken, 28) << "of 32 that would fill it";
    }
    EXPECT_EQ(::umount(path.constData()), 0);
}

TEST(ScratchFile, BytesThatTheDiskLostAreNone) {
    const QTemporaryDir folder;
    const auto file = ScratchFile::create({folder.path()}, plenty);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->read({1 << 20, 100}).isEmpty()) << "behind its end";
}

} // namespace

} // namespace stillwick::testing
