// What a file says never makes the program speak to the network: every socket that it makes, as
// strace sees them.
#include "../Strace.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>

namespace {

constexpr int killed = 124; // what timeout makes of a program that was still running

const QString sample = QStringLiteral(STILLWICK_SOURCE_DIR "/Samples/balles.mp4");

class NoNetworkTest : public testing::Test {
protected:
    /// What a command and its children ask of the system about sockets. It ends with `status`.
    QByteArray socketsOf(const QStringList& command, int status = 0) const {
        const QString log = folder.filePath(QStringLiteral("log"));
        QProcess strace;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        strace.setProcessEnvironment(environment);
        strace.setWorkingDirectory(folder.path());
        strace.start(
            QStringLiteral("strace"),
            QStringList{QStringLiteral("-f"), QStringLiteral("--seccomp-bpf"), QStringLiteral("-e"),
                        QStringLiteral("trace=socket,connect,execve"), QStringLiteral("-o"), log} +
                command);
        constexpr int twoMinutes = 120'000;
        EXPECT_TRUE(strace.waitForFinished(twoMinutes));
        QFile file(log);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray sockets = file.readAll();
        EXPECT_EQ(strace.exitStatus(), QProcess::NormalExit) << strace.errorString().toStdString();
        EXPECT_EQ(strace.exitCode(), status)
            << command.join(u' ').toStdString() << '\n'
            << strace.readAllStandardError().constData() << sockets.constData();
        return sockets;
    }
    /// The program with its window open on a film, for so many seconds. In the foreground, since
    /// `timeout` otherwise has a program that it has ended go on, and strace fails on its last
    /// threads.
    static QStringList windowEndedAfter(const QString& seconds, const QString& film) {
        return {QStringLiteral("timeout"), QStringLiteral("--foreground"), seconds,
                QStringLiteral(STILLWICK_PROGRAM), film};
    }
    static bool hasNetwork(const QByteArray& log) { return log.contains("AF_INET"); }

    void SetUp() override {
        if (!stillwick::testing::canTrace())
            GTEST_SKIP() << "strace cannot trace here";
    }

    QTemporaryDir folder;
};

TEST_F(NoNetworkTest, ASocketOfTheNetworkWouldBeSeen) {
    EXPECT_TRUE(hasNetwork(socketsOf({QStringLiteral("python3"), QStringLiteral("-c"),
                                      QStringLiteral("import socket; socket.socket()")})));
}

TEST_F(NoNetworkTest, TheMainJobMakesNone) {
    const QByteArray log = socketsOf({QStringLiteral(STILLWICK_PROGRAM), QStringLiteral("capture"),
                                      sample, QStringLiteral("--at"), QStringLiteral("1"),
                                      QStringLiteral("-o"), folder.path()});
    EXPECT_FALSE(hasNetwork(log)) << log.constData();
    EXPECT_EQ(QDir(folder.path()).entryList({QStringLiteral("*.png")}).size(), 1);
}

TEST_F(NoNetworkTest, TheWindowMakesNone) {
    // By then the film is open and its picture shown.
    const QByteArray log = socketsOf(windowEndedAfter(QStringLiteral("5"), sample), killed);
    EXPECT_FALSE(hasNetwork(log)) << log.constData();
}

struct NamedFile {
    const char* name;
    const char* content; ///< none: there is no such file
};

std::ostream& operator<<(std::ostream& stream, const NamedFile& file) {
    return stream << file.name;
}

class LuringFileTest : public NoNetworkTest, public testing::WithParamInterface<NamedFile> {
protected:
    /// Where the file would be; the folder of a name with slashes is not made.
    void put() const {
        if (GetParam().content == nullptr)
            return;
        QFile file(folder.filePath(QString::fromUtf8(GetParam().name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(GetParam().content);
    }
};

TEST_P(LuringFileTest, IsNotFollowedByAnyCommand) {
    put();
    const QString name = QString::fromUtf8(GetParam().name);
    const QStringList still{QStringLiteral(STILLWICK_PROGRAM),
                            QStringLiteral("still"),
                            name,
                            QStringLiteral("--at"),
                            QStringLiteral("0"),
                            QStringLiteral("-o"),
                            QStringLiteral("x.png")};
    const QStringList exporting{QStringLiteral(STILLWICK_PROGRAM), QStringLiteral("export"), name,
                                QStringLiteral("-o"), QStringLiteral("x")};
    const QStringList window = windowEndedAfter(QStringLiteral("2"), name);
    for (const QStringList& command : {still, exporting, window}) {
        const QByteArray log = socketsOf(command, command == window ? killed : 2);
        EXPECT_TRUE(log.contains("execve")) << command.join(u' ').toStdString();
        EXPECT_FALSE(hasNetwork(log)) << command.join(u' ').toStdString() << '\n'
                                      << log.constData();
    }
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("x.png"))));
}

#define ADDRESS "http://127.0.0.1:9/a.ts"

INSTANTIATE_TEST_SUITE_P(
    Lures, LuringFileTest,
    testing::Values(
        NamedFile{"list.m3u8",
                  "#EXTM3U\n#EXT-X-TARGETDURATION:4\n#EXTINF:4,\n" ADDRESS "\n#EXT-X-ENDLIST\n"},
        // By their content lists, by their names films.
        NamedFile{"list.mp4",
                  "#EXTM3U\n#EXT-X-TARGETDURATION:4\n#EXTINF:4,\n" ADDRESS "\n#EXT-X-ENDLIST\n"},
        NamedFile{"parts.ffconcat", "ffconcat version 1.0\nfile '" ADDRESS "'\n"},
        NamedFile{"parts.mp4", "ffconcat version 1.0\nfile '" ADDRESS "'\n"},
        NamedFile{"session.sdp", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
                                 "m=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n"},
        NamedFile{
            "film.mpd",
            "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" "
            "type=\"static\" mediaPresentationDuration=\"PT4S\"><Period><AdaptationSet "
            "mimeType=\"video/mp4\"><Representation id=\"1\" bandwidth=\"1\"><BaseURL>" ADDRESS
            "</BaseURL></Representation></AdaptationSet></Period></MPD>"},
        NamedFile{"film.asx",
                  "<asx version=\"3.0\"><entry><ref href=\"" ADDRESS "\"/></entry></asx>"},
        NamedFile{"film.rtsp", "rtsptext\nrtsp://127.0.0.1:9/a\n"},
        NamedFile{
            "project.stillwick",
            "{\"activeGroupIndex\": 0, \"cropToSubject\": false, \"edge\": {\"a\": 1, \"b\": 1, "
            "\"feather\": 0, \"g\": 1, \"outline\": false, \"outlineWidth\": 6, \"r\": 1, "
            "\"shrink\": 0}, \"filter\": \"none\", \"groups\": [], \"version\": 1, "
            "\"videoBookmark\": \"c3dibQGUrTKFO+6ui2h0dHA6Ly8xMjcuMC4wLjE6OS9hLnRz\", "
            "\"videoName\": \"" ADDRESS "\"}"},
        NamedFile{ADDRESS, nullptr}, NamedFile{"tcp://127.0.0.1:9", nullptr},
        NamedFile{"concat:" ADDRESS, nullptr}, NamedFile{"rtsp://127.0.0.1:9/a", nullptr}));

} // namespace
