#include "Stillwick/ImageExportService.h"

#include "ForkedChild.h"
#include "Stillwick/AppError.h"

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>

#include <sys/stat.h>

namespace stillwick {

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

/// A cut-out: the left half opaque red, the right half nothing.
QImage cutOut() {
    QImage image(40, 20, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::transparent);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            image.setPixelColor(x, y, QColor(255, 0, 0));
    image.setColorSpace(QColorSpace::SRgb);
    return image;
}

std::string descriptionOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const AppError& error) {
        EXPECT_EQ(error.kind(), AppError::Case::exportFailed);
        return error.description().toStdString();
    }
    return "nothing was thrown";
}

class ImageExportServiceTest : public testing::Test {
protected:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QStringList names() const {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    ImageExportService m_service;

private:
    QTemporaryDir m_folder;
};

TEST_F(ImageExportServiceTest, APictureIsWrittenInFullSizeWithItsTransparency) {
    m_service.writePNG(cutOut(), path(QStringLiteral("a.png")));
    const QImage read(path(QStringLiteral("a.png")), "PNG");
    EXPECT_EQ(read.size(), QSize(40, 20));
    EXPECT_EQ(read.pixel(0, 0), qRgba(255, 0, 0, 255));
    EXPECT_EQ(read.pixel(19, 19), qRgba(255, 0, 0, 255));
    EXPECT_EQ(read.pixel(20, 0), qRgba(0, 0, 0, 0));
    EXPECT_EQ(read.colorSpace(), QColorSpace(QColorSpace::SRgb));
    EXPECT_EQ(names(), QStringList{QStringLiteral("a.png")});
}

TEST_F(ImageExportServiceTest, AFullyTransparentPictureIsWrittenInFullSize) {
    QImage image(33, 17, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::transparent);
    m_service.writePNG(image, path(QStringLiteral("a.png")));
    const QImage read(path(QStringLiteral("a.png")), "PNG");
    EXPECT_EQ(read.size(), QSize(33, 17));
    EXPECT_EQ(qAlpha(read.pixel(16, 8)), 0);
}

TEST_F(ImageExportServiceTest, AnotherColorSpaceIsKeptAndNotConverted) {
    QImage image = cutOut();
    image.setColorSpace(QColorSpace::DisplayP3);
    m_service.writePNG(image, path(QStringLiteral("a.png")));
    const QImage read(path(QStringLiteral("a.png")), "PNG");
    EXPECT_EQ(read.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    EXPECT_EQ(read.pixel(0, 0), qRgba(255, 0, 0, 255));
}

TEST_F(ImageExportServiceTest, AnExistingFileIsReplaced) {
    const QString picture = path(QStringLiteral("a.png"));
    m_service.writeText(QString(100'000, u'x'), picture);
    m_service.writePNG(cutOut(), picture);
    EXPECT_EQ(QImage(picture, "PNG").size(), QSize(40, 20));
    m_service.writeText(QStringLiteral("court"), picture);
    EXPECT_EQ(contentOf(picture), "court");
}

TEST_F(ImageExportServiceTest, TextIsWrittenInUtf8WithoutAByteOrderMark) {
    m_service.writeText(QStringLiteral("# Été — 🎬\n"), path(QStringLiteral("a.md")));
    EXPECT_EQ(contentOf(path(QStringLiteral("a.md"))),
              "# \xC3\x89t\xC3\xA9 \xE2\x80\x94 \xF0\x9F\x8E\xAC\n");
    m_service.writeText(QString(), path(QStringLiteral("b.md")));
    EXPECT_EQ(contentOf(path(QStringLiteral("b.md"))), "");
}

TEST_F(ImageExportServiceTest, AMissingFolderIsAnExportFailureAndIsNotMade) {
    const QString inMissing = path(QStringLiteral("missing/a"));
    EXPECT_EQ(descriptionOf([&] { m_service.writePNG(cutOut(), inMissing); }),
              "Échec de l'export : Le dossier n'existe pas.");
    EXPECT_EQ(descriptionOf([&] { m_service.writeText(QStringLiteral("x"), inMissing); }),
              "Échec de l'export : Le dossier n'existe pas.");
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(ImageExportServiceTest, AFolderOfThatNameIsAnExportFailure) {
    ASSERT_TRUE(QDir(path(QString())).mkdir(QStringLiteral("a.png")));
    EXPECT_EQ(descriptionOf([&] { m_service.writePNG(cutOut(), path(QStringLiteral("a.png"))); }),
              "Échec de l'export : Un dossier ou un périphérique porte déjà ce nom.");
}

TEST_F(ImageExportServiceTest, ANameTooLongIsAnExportFailure) {
    const QString name = path(QString(300, u'n') + QStringLiteral(".png"));
    EXPECT_EQ(descriptionOf([&] { m_service.writePNG(cutOut(), name); }),
              "Échec de l'export : Le nom du fichier est trop long.");
}

TEST_F(ImageExportServiceTest, NoPictureIsAnExportFailureThatKeepsTheOldFile) {
    const QString picture = path(QStringLiteral("a.png"));
    m_service.writeText(QStringLiteral("ancien"), picture);
    EXPECT_EQ(descriptionOf([&] { m_service.writePNG(QImage(), picture); }),
              "Échec de l'export : L'image est vide.");
    EXPECT_EQ(contentOf(picture), "ancien");
}

TEST_F(ImageExportServiceTest, AFullDiskIsAnExportFailureThatKeepsTheOldFile) {
    const std::string folder = path(QString()).toStdString();
    const auto report = inChild([&]() -> std::string {
        if (const auto obstacle = mountSmallDisk(folder, "8k"); !obstacle.empty())
            return "skip " + obstacle;
        const QString text = path(QStringLiteral("a.md"));
        m_service.writeText(QStringLiteral("ancien"), text);
        return descriptionOf([&] { m_service.writeText(QString(20'000, u'x'), text); }) + '|' +
               contentOf(text).toStdString() + '|' + names().join(u' ').toStdString();
    });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_EQ(report, "Échec de l'export : Le disque est plein.|ancien|a.md");
}

TEST_F(ImageExportServiceTest, AReadOnlyFolderIsAnExportFailure) {
    const std::string folder = path(QString()).toStdString();
    ASSERT_EQ(::chmod(folder.c_str(), 0555), 0);
    const auto report = inChild([&] {
        becomeNobody();
        return descriptionOf([&] { m_service.writePNG(cutOut(), path(QStringLiteral("a.png"))); });
    });
    ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
    EXPECT_EQ(report, "Échec de l'export : Le dossier est en lecture seule.");
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(ImageExportServiceTest, ADeviceIsNotTakenForAFile) {
    EXPECT_EQ(descriptionOf(
                  [&] { m_service.writeText(QStringLiteral("x"), QStringLiteral("/dev/full")); }),
              "Échec de l'export : Un dossier ou un périphérique porte déjà ce nom.");
    EXPECT_TRUE(QFile::exists(QStringLiteral("/dev/full")));
}

} // namespace

} // namespace stillwick
