#include "AtomicFileFixture.h"
#include "ForkedChild.h"

#include "Desktop/DesktopError.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace stillwick {

namespace {

TEST_F(AtomicFileTest, ANewFileHoldsExactlyTheBytes) {
    EXPECT_EQ(written(path("a"), QByteArray("x\0y\n", 4)), "ok");
    EXPECT_EQ(contentOf(path("a")), std::string("x\0y\n", 4));
    EXPECT_EQ(written(path("b"), {}), "ok");
    EXPECT_EQ(contentOf(path("b")), "");
    EXPECT_EQ(written(path("c"), QByteArray(5'000'000, 'x')), "ok");
    EXPECT_EQ(contentOf(path("c")), std::string(5'000'000, 'x'));
    EXPECT_EQ(names(), "a b c");
}

TEST_F(AtomicFileTest, AnExistingFileIsReplacedAndNothingStaysBesideIt) {
    put(path("a"), "a longer old content");
    EXPECT_EQ(written(path("a"), "new"), "ok");
    EXPECT_EQ(contentOf(path("a")), "new");
    EXPECT_EQ(names(), "a");
}

TEST_F(AtomicFileTest, ARelativePathIsTakenFromTheWorkingFolder) {
    const auto report =
        inChild([this] { return ::chdir(path().c_str()) == 0 ? written("a", "new") : "no chdir"; });
    EXPECT_EQ(report, "ok");
    EXPECT_EQ(contentOf(path("a")), "new");
}

TEST_F(AtomicFileTest, NamesWithAccentsSpacesAndLineBreaksAreWritten) {
    for (const std::string name : {"Été à la plage.md", " ", "a\nb", "-rf", "%1$s"}) {
        EXPECT_EQ(written(path(name), "new"), "ok");
        EXPECT_EQ(contentOf(path(name)), "new");
    }
}

TEST_F(AtomicFileTest, ANewFileHonoursTheUmask) {
    const auto report = inChild([this] {
        ::umask(027);
        return written(path("a"), "new");
    });
    EXPECT_EQ(report, "ok");
    EXPECT_EQ(modeOf(path("a")), 0640U);
}

TEST_F(AtomicFileTest, AnExistingFileKeepsItsPermissions) {
    for (const mode_t mode : {0600U, 0604U, 0666U, 0755U}) {
        put(path("a"), "old");
        ASSERT_EQ(::chmod(path("a").c_str(), mode), 0);
        EXPECT_EQ(written(path("a"), "new"), "ok");
        EXPECT_EQ(modeOf(path("a")), mode);
    }
}

TEST_F(AtomicFileTest, AnExistingFileKeepsItsOwnerWhereTheSystemAllowsIt) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can make a file of another owner";
    put(path("a"), "old");
    ASSERT_EQ(::chown(path("a").c_str(), 65534, 65534), 0);
    ASSERT_EQ(::chmod(path("a").c_str(), 06755), 0);
    EXPECT_EQ(written(path("a"), "new"), "ok");
    struct stat status {};
    ASSERT_EQ(::stat(path("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534U);
    EXPECT_EQ(status.st_gid, 65534U);
    EXPECT_EQ(status.st_mode & 07777U, 06755U);
}

TEST_F(AtomicFileTest, ASymbolicLinkStaysAndItsTargetIsWritten) {
    ASSERT_EQ(::mkdir(path("sub").c_str(), 0755), 0);
    put(path("sub/target"), "old");
    ASSERT_EQ(::symlink("sub/target", path("relative").c_str()), 0);
    ASSERT_EQ(::symlink(path("relative").c_str(), path("chain").c_str()), 0);
    EXPECT_EQ(written(path("relative"), "one"), "ok");
    EXPECT_EQ(contentOf(path("sub/target")), "one");
    EXPECT_EQ(written(path("chain"), "two"), "ok");
    EXPECT_EQ(contentOf(path("sub/target")), "two");
    EXPECT_TRUE(QFileInfo(QString::fromStdString(path("relative"))).isSymLink());
    EXPECT_TRUE(QFileInfo(QString::fromStdString(path("chain"))).isSymLink());
    EXPECT_EQ(names(), "chain relative sub");
    EXPECT_EQ(namesIn(path("sub")), "target");
}

TEST_F(AtomicFileTest, ALinkToAFileThatIsNotThereMakesTheFile) {
    ASSERT_EQ(::symlink("target", path("link").c_str()), 0);
    EXPECT_EQ(written(path("link"), "new"), "ok");
    EXPECT_EQ(contentOf(path("target")), "new");
    EXPECT_TRUE(QFileInfo(QString::fromStdString(path("link"))).isSymLink());
}

TEST_F(AtomicFileTest, LinksThatGoInCirclesAreRefused) {
    ASSERT_EQ(::symlink("b", path("a").c_str()), 0);
    ASSERT_EQ(::symlink("a", path("b").c_str()), 0);
    EXPECT_EQ(written(path("a"), "new"), "Le lien symbolique ne mène à aucun fichier.");
    EXPECT_EQ(names(), "a b");
}

TEST_F(AtomicFileTest, AHardLinkKeepsTheOldContent) {
    put(path("a"), "old");
    ASSERT_EQ(::link(path("a").c_str(), path("b").c_str()), 0);
    EXPECT_EQ(written(path("a"), "new"), "ok");
    EXPECT_EQ(contentOf(path("b")), "old");
}

TEST_F(AtomicFileTest, TheLongestNameOfAFolderCanBeWrittenAndALongerOneNot) {
    const std::string longest(255, 'x');
    EXPECT_EQ(written(path(longest), "new"), "ok");
    EXPECT_EQ(contentOf(path(longest)), "new");
    EXPECT_EQ(written(path(longest + 'x'), "new"), "Le nom du fichier est trop long.");
    EXPECT_EQ(names(), longest);
}

TEST_F(AtomicFileTest, NamesThatNoFileCanHaveAreRefused) {
    using namespace std::string_literals;
    EXPECT_EQ(written(path("a\0b"s), "new"), "Le nom du fichier n'est pas valable.");
    EXPECT_EQ(written("", "new"), "Le nom du fichier n'est pas valable.");
    const QString halfCharacter = QString::fromStdString(path("a")) + QChar(0xD800);
    try {
        writeFileAtomically(halfCharacter, "new");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const DesktopError& error) {
        EXPECT_EQ(error.category(), DesktopError::Category::NameInvalid);
    }
    EXPECT_EQ(names(), "");
}

TEST_F(AtomicFileTest, AMissingFolderIsReportedAndNotMade) {
    EXPECT_EQ(written(path("missing/a"), "new"), "Le dossier n'existe pas.");
    EXPECT_EQ(written(path("missing/"), "new"), "Le dossier n'existe pas.");
    put(path("file"), "old");
    EXPECT_EQ(written(path("file/a"), "new"), "Le dossier n'existe pas.");
    EXPECT_EQ(names(), "file");
}

TEST_F(AtomicFileTest, AFolderOrADeviceInTheWayStays) {
    ASSERT_EQ(::mkdir(path("folder").c_str(), 0755), 0);
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0644), 0);
    for (const std::string name : {"folder", "folder/", "pipe"})
        EXPECT_EQ(written(path(name), "new"), "Un dossier ou un périphérique porte déjà ce nom.");
    EXPECT_EQ(names(), "folder pipe");
    EXPECT_EQ(namesIn(path("folder")), "");
}

TEST_F(AtomicFileTest, AReadOnlyFolderIsReported) {
    put(path("a"), "old");
    ASSERT_EQ(::chmod(path("a").c_str(), 0666), 0);
    ASSERT_EQ(::chmod(path().c_str(), 0555), 0);
    const auto report = inChild([this] {
        becomeNobody();
        return written(path("a"), "new") + ' ' + written(path("b"), "new");
    });
    ASSERT_EQ(::chmod(path().c_str(), 0755), 0);
    EXPECT_EQ(report, "Le dossier est en lecture seule. Le dossier est en lecture seule.");
    EXPECT_EQ(contentOf(path("a")), "old");
    EXPECT_EQ(names(), "a");
}

TEST_F(AtomicFileTest, AWriteProtectedFileIsNotReplaced) {
    put(path("a"), "old");
    ASSERT_EQ(::chmod(path("a").c_str(), 0444), 0);
    ASSERT_EQ(::chmod(path().c_str(), 0777), 0);
    const auto report = inChild([this] {
        becomeNobody();
        return written(path("a"), "new");
    });
    EXPECT_EQ(report, "Le fichier existant est protégé en écriture.");
    EXPECT_EQ(contentOf(path("a")), "old");
    EXPECT_EQ(names(), "a");
}

// In a folder like /tmp, others may write a file but not put another in its place.
TEST_F(AtomicFileTest, AForeignFileInAStickyFolderIsNotReplaced) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can leave a file of another owner";
    put(path("a"), "old");
    ASSERT_EQ(::chmod(path("a").c_str(), 0666), 0);
    ASSERT_EQ(::chmod(path().c_str(), 01777), 0);
    const auto report = inChild([this] {
        becomeNobody();
        return written(path("a"), "new");
    });
    EXPECT_EQ(report, "Le fichier existant est protégé en écriture.");
    EXPECT_EQ(contentOf(path("a")), "old");
    EXPECT_EQ(names(), "a");
}

TEST_F(AtomicFileTest, AFolderThatMayBeWrittenButNotReadIsWritten) {
    ASSERT_EQ(::mkdir(path("blind").c_str(), 0755), 0);
    ASSERT_EQ(::chmod(path("blind").c_str(), 0333), 0);
    const auto report = inChild([this] {
        becomeNobody();
        return written(path("blind/a"), "new");
    });
    ASSERT_EQ(::chmod(path("blind").c_str(), 0755), 0);
    EXPECT_EQ(report, "ok");
    EXPECT_EQ(contentOf(path("blind/a")), "new");
}

/// Fills a disk of 64 KiB but for `freeBytes`, then writes `content` over a file of it.
std::string writtenOnFullDisk(const std::string& folder, qsizetype freeBytes,
                              const QByteArray& content) {
    if (const auto obstacle = mountSmallDisk(folder, "64k"); !obstacle.empty())
        return "skip " + obstacle;
    put(folder + "/a", "old");
    put(folder + "/ballast", std::string(static_cast<std::size_t>(65536 - 4096 - freeBytes), 'x'));
    const std::string report = written(folder + "/a", content);
    return report + '|' + contentOf(folder + "/a") + '|' + namesIn(folder);
}

class FullDiskTest : public AtomicFileTest,
                     public ::testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(FullDiskTest, AFullDiskIsReportedAndTheOldContentStays) {
    const auto [freeBytes, size] = GetParam();
    const auto report =
        inChild([&] { return writtenOnFullDisk(path(), freeBytes, QByteArray(size, 'n')); });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_EQ(report, "Le disque est plein.|old|a ballast");
}

// One byte where not a page is free; below and above the 16 KiB that writers like to buffer.
INSTANTIATE_TEST_SUITE_P(Sizes, FullDiskTest,
                         ::testing::Values(std::pair(0, 1), std::pair(4096, 8000),
                                           std::pair(20480, 40000), std::pair(0, 600'000)));

TEST_F(AtomicFileTest, AnAlmostFullDiskTakesWhatFits) {
    const auto report =
        inChild([&] { return writtenOnFullDisk(path(), 8192, QByteArray(8192, 'n')); });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_TRUE(report == "ok|" + std::string(8192, 'n') + "|a ballast") << report.substr(0, 80);
}

TEST_F(AtomicFileTest, AReadOnlyDiskIsReported) {
    const auto report = inChild([this]() -> std::string {
        if (const auto obstacle = mountSmallDisk(path(), "64k"); !obstacle.empty())
            return "skip " + obstacle;
        put(path("a"), "old");
        if (const auto obstacle = makeDiskReadOnly(path()); !obstacle.empty())
            return "skip " + obstacle;
        return written(path("a"), "new") + written(path("b"), "new") + contentOf(path("a"));
    });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_EQ(report, "Le disque est en lecture seule.Le disque est en lecture seule.old");
}

TEST_F(AtomicFileTest, AFileAboveTheLimitOfTheProcessIsReported) {
    put(path("a"), "old");
    const auto report = inChild([this] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100'000, 100'000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        return written(path("a"), QByteArray(300'000, 'n'));
    });
    EXPECT_EQ(report, "Le fichier est trop volumineux pour ce disque.");
    EXPECT_EQ(contentOf(path("a")), "old");
    EXPECT_EQ(names(), "a");
}

TEST_F(AtomicFileTest, WhoReadsDuringTheWritesSeesTheOldContentOrTheNew) {
    const std::string one(200'000, '1');
    const std::string two(300'000, '2');
    put(path("a"), one);
    const pid_t writer = ::fork();
    if (writer == 0) {
        bool isWritten = true;
        for (int i = 0; i < 100; ++i)
            isWritten &= written(path("a"), QByteArray::fromStdString(i % 2 ? one : two)) == "ok";
        ::_exit(isWritten ? 0 : 1);
    }
    int status = 0;
    int torn = 0;
    while (::waitpid(writer, &status, WNOHANG) == 0) {
        const std::string seen = contentOf(path("a"));
        torn += seen != one && seen != two;
    }
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(names(), "a");
}

/// A system call that goes wrong, as FaultShim.cpp reads it, and what the user is told.
struct Fault {
    const char* fault;
    const char* report;
};

class FaultTest : public AtomicFileTest, public ::testing::WithParamInterface<Fault> {
protected:
    /// What a process of its own says after it wrote `content` to the file "a" with that fault.
    std::string writtenWithFault(const std::string& content) const {
        const QTemporaryDir elsewhere;
        const std::string input = elsewhere.filePath(QStringLiteral("input")).toStdString();
        put(input, content);
        const std::string command = std::string("env LD_PRELOAD='" FAULT_SHIM "' ") +
                                    "STILLWICK_FAULT='" + GetParam().fault +
                                    "' '" ATOMIC_WRITE "' '" + path("a") + "' <'" + input + "'";
        const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
        std::array<char, 256> line{};
        if (!output || !std::fgets(line.data(), line.size(), output.get()))
            return "no answer";
        std::string report(line.data());
        return report.substr(0, report.find('\n'));
    }
};

class LosingFaultTest : public FaultTest {};

TEST_P(LosingFaultTest, TheFailureIsReportedAndTheOldContentStays) {
    put(path("a"), "old");
    EXPECT_EQ(writtenWithFault("new"), GetParam().report);
    EXPECT_EQ(contentOf(path("a")), "old");
    EXPECT_EQ(names(), "a");
}

TEST_P(LosingFaultTest, TheFailureLeavesNoFileWhereThereWasNone) {
    EXPECT_EQ(writtenWithFault("new"), GetParam().report);
    EXPECT_EQ(names(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Faults, LosingFaultTest,
    ::testing::Values(Fault{"write ENOSPC 1", "Le disque est plein."},
                      Fault{"write NOTHING 1", "Le disque est plein."},
                      Fault{"write EIO 1", "Le disque a signalé une erreur."},
                      Fault{"write EDQUOT 1", "L'espace disque qui vous est alloué est épuisé."},
                      Fault{"fsync ENOSPC 1", "Le disque est plein."},
                      Fault{"fsync EIO 1", "Le disque a signalé une erreur."},
                      Fault{"close EIO 1", "Le disque a signalé une erreur."},
                      Fault{"close ENOSPC 1", "Le disque est plein."},
                      Fault{"rename EIO 1", "Le disque a signalé une erreur."},
                      Fault{"rename ENOSPC 1", "Le disque est plein."},
                      Fault{"rename EPERM 1", "Le fichier existant est protégé en écriture."}));

class HarmlessFaultTest : public FaultTest {};

TEST_P(HarmlessFaultTest, TheWholeContentIsWrittenNevertheless) {
    put(path("a"), "old");
    const std::string content(100'003, 'n');
    EXPECT_EQ(writtenWithFault(content), GetParam().report);
    EXPECT_TRUE(contentOf(path("a")) == content);
    EXPECT_EQ(names(), "a");
}

// The last row is the one failure that comes too late: the folder could not be synchronised.
INSTANTIATE_TEST_SUITE_P(
    Faults, HarmlessFaultTest,
    ::testing::Values(Fault{"write SHORT 1", "ok"}, Fault{"write EINTR 1", "ok"},
                      Fault{"fsync EINTR 1", "ok"}, Fault{"fsync EINVAL 1", "ok"},
                      Fault{"close EINTR 1", "ok"},
                      Fault{"fsync EIO 2", "Le disque a signalé une erreur."}));

} // namespace

} // namespace stillwick
