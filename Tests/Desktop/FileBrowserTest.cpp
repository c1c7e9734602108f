// Showing folders, against a message bus and a file manager of the test's own.
#include "FileManager.h"
#include "SessionBus.h"

#include "Desktop/FileBrowser.h"

#include <QCoroTask>
#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

namespace stillwick::testing {

namespace {

SessionBus* theBus = nullptr;

class FileBrowserTest : public ::testing::Test {
public:
    ~FileBrowserTest() override {
        m_connection.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
        m_connection.unregisterObject(QStringLiteral("/org/freedesktop/FileManager1"));
    }
    Q_DISABLE_COPY_MOVE(FileBrowserTest)

protected:
    FileBrowserTest() = default;

    void startFileManager() {
        ASSERT_TRUE(theBus->isRunning());
        ASSERT_TRUE(m_connection.registerObject(QStringLiteral("/org/freedesktop/FileManager1"),
                                                &fileManager, QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(m_connection.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    }

    QString makeFolder(const QString& name) const {
        EXPECT_TRUE(QDir(m_folder.path()).mkdir(name));
        return m_folder.filePath(name);
    }

    static bool shown(const QString& path) { return QCoro::waitFor(showFolder(path)); }

    FileManager fileManager;

private:
    QTemporaryDir m_folder;
    QDBusConnection m_connection = theBus->connection(QStringLiteral("file manager"));
};

TEST_F(FileBrowserTest, TheFileManagerIsAskedWithAccentsAndSignsEscaped) {
    startFileManager();
    const QString path = makeFolder(QStringLiteral("Été 100 % #1 ; sûr"));
    EXPECT_TRUE(shown(path));
    // Worked out by hand from RFC 3986 and UTF-8.
    ASSERT_EQ(fileManager.shown.size(), 1);
    EXPECT_TRUE(fileManager.shown.front().startsWith(QStringLiteral("file:///")));
    EXPECT_TRUE(fileManager.shown.front().endsWith(
        QStringLiteral("/%C3%89t%C3%A9%20100%20%25%20%231%20;%20s%C3%BBr")))
        << fileManager.shown.front().toStdString();
}

TEST_F(FileBrowserTest, WithoutAFileManagerTheDesktopsOpenerIsAsked) {
    Opener opener;
    const QString path = makeFolder(QStringLiteral("sortie"));
    EXPECT_TRUE(shown(path));
    EXPECT_EQ(opener.opened, QList{QUrl::fromLocalFile(path)});
}

TEST_F(FileBrowserTest, AFileManagerThatRefusesIsReplacedByTheOpener) {
    startFileManager();
    fileManager.isRefusing = true;
    Opener opener;
    EXPECT_TRUE(shown(makeFolder(QStringLiteral("sortie"))));
    EXPECT_EQ(opener.opened.size(), 1);
}

TEST_F(FileBrowserTest, WhereNeitherWorksItIsSaid) {
    EXPECT_FALSE(shown(makeFolder(QStringLiteral("sortie"))));
}

TEST_F(FileBrowserTest, AFolderThatIsGoneIsNotShown) {
    startFileManager();
    EXPECT_FALSE(shown(QStringLiteral("/nowhere/at/all")));
    EXPECT_TRUE(fileManager.shown.isEmpty());
}

} // namespace

} // namespace stillwick::testing

int main(int argc, char** argv) {
    stillwick::testing::SessionBus bus;
    stillwick::testing::theBus = &bus;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
