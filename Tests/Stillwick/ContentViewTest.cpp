// The whole of a window: films by drop, titles, notices.
#include "ColourTables.h"
#include "GateSegmenter.h"
#include "SampleState.h"

#include "Stillwick/ContentView.h"
#include "Stillwick/StillwickWindow.h"
#include "Stillwick/VideoArea.h"
#include "Stillwick/VideoPlayerView.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QToolBar>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;

class ContentViewTest : public ::testing::Test {
protected:
    ContentViewTest() { window->show(); }

    [[nodiscard]] AppState& state() const { return window->state(); }
    [[nodiscard]] QString nameInToolbar() const {
        return window->findChild<QToolBar*>()->findChild<QLabel*>()->text();
    }
    /// Whether the area took the drop.
    bool drop(const QList<QUrl>& urls) {
        QMimeData data;
        data.setUrls(urls);
        auto& area = *window->findChild<VideoArea*>();
        QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, {});
        enter.ignore();
        QCoreApplication::sendEvent(&area, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&area, &dropped);
        return true;
    }
    [[nodiscard]] QMessageBox* notice() const {
        for (auto* each : window->findChildren<QMessageBox*>())
            if (each->isVisible())
                return each;
        return nullptr;
    }

    QTemporaryDir folder;
    // Its destruction at closing time is the window's own; here the test's.
    std::unique_ptr<StillwickWindow> window = std::make_unique<StillwickWindow>();
};

TEST_F(ContentViewTest, FilmsAreKnownByTheirNames) {
    for (const char* name : {"a.mp4", "a.MOV", "b.mkv", "c.avi", "d.webm", "é.m2ts"})
        EXPECT_TRUE(ContentView::isMovieFile(
            QUrl::fromLocalFile(QStringLiteral("/x/") + QString::fromUtf8(name))))
            << name;
    for (const char* name : {"a.txt", "a.png", "a.mp3", "mp4", "a.stillwick", "a"})
        EXPECT_FALSE(ContentView::isMovieFile(
            QUrl::fromLocalFile(QStringLiteral("/x/") + QString::fromUtf8(name))))
            << name;
    EXPECT_FALSE(ContentView::isMovieFile(QUrl(QStringLiteral("https://example.org/a.mp4"))));
}

TEST_F(ContentViewTest, OfATextAndAFilmTheFilmIsOpened) {
    const QUrl film = QUrl::fromLocalFile(folder.filePath(QStringLiteral("film.mov")));
    ASSERT_TRUE(QFile::copy(sampleFilm().toLocalFile(), film.toLocalFile()));
    EXPECT_TRUE(drop({QUrl::fromLocalFile(folder.filePath(QStringLiteral("notes.txt"))), film}));
    EXPECT_EQ(state().videoURL(), film);
}

TEST_F(ContentViewTest, ADropWithoutAFilmIsRefused) {
    EXPECT_FALSE(drop({QUrl::fromLocalFile(QStringLiteral("/x/notes.txt"))}));
    EXPECT_FALSE(state().hasVideo());
}

TEST_F(ContentViewTest, TheTitleIsTheProjectsElseTheFilmsElseTheProgrammes) {
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Stillwick"));
    EXPECT_EQ(nameInToolbar(), QString());
    load(state());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("balles"));
    EXPECT_EQ(nameInToolbar(), QStringLiteral("balles"));
    state().saveProject(QUrl::fromLocalFile(folder.filePath(QStringLiteral("séance 1.stillwick"))));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("séance 1"));
    EXPECT_EQ(nameInToolbar(), QStringLiteral("balles"));
}

TEST_F(ContentViewTest, AMessageIsShownOnceAndOkClearsIt) {
    state().captureCurrentFrame();
    ASSERT_NE(notice(), nullptr);
    EXPECT_EQ(notice()->windowTitle(), QStringLiteral("Erreur"));
    EXPECT_EQ(notice()->informativeText(), QStringLiteral("Aucune vidéo chargée."));
    ASSERT_EQ(notice()->buttons().size(), 1);
    EXPECT_EQ(notice()->buttons().front()->text(), QStringLiteral("OK"));
    notice()->buttons().front()->click();
    EXPECT_EQ(state().errorMessage(), std::nullopt);
    EXPECT_EQ(notice(), nullptr);
}

TEST_F(ContentViewTest, DismissingTheNoticeClearsTheMessageToo) {
    state().captureCurrentFrame();
    ASSERT_NE(notice(), nullptr);
    notice()->reject();
    EXPECT_EQ(state().errorMessage(), std::nullopt);
}

TEST_F(ContentViewTest, TheImporterOpensWhatIsChosen) {
    window->content().showImporter();
    auto* const dialog = window->findChild<QFileDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->nameFilters().front().contains(QStringLiteral("*.mp4")));
    dialog->selectFile(sampleFilm().toLocalFile());
    ASSERT_TRUE(QMetaObject::invokeMethod(dialog, "accept"));
    EXPECT_EQ(state().videoURL(), sampleFilm());
}

TEST_F(ContentViewTest, ThePictureIsFittedIntoTheVideoArea) {
    load(state());
    auto& view = *window->findChild<VideoPlayerView*>();
    const QRect picture = view.pictureRect();
    EXPECT_TRUE(view.rect().contains(picture));
    EXPECT_NEAR(double(picture.width()) / picture.height(), 1280.0 / 720, 0.02);
    QImage shown(view.size(), QImage::Format_RGB32);
    view.render(&shown, {}, {}, QWidget::DrawWindowBackground);
    // The picture's own middle, as near as scaling leaves it.
    const QColor middle = state().player()->picture().pixelColor(640, 200);
    const QColor seen = shown.pixelColor(picture.left() + picture.width() / 2,
                                         picture.top() + picture.height() * 200 / 720);
    EXPECT_NEAR(seen.red(), middle.red(), 12);
    EXPECT_NEAR(seen.green(), middle.green(), 12);
    EXPECT_NEAR(seen.blue(), middle.blue(), 12);
}

TEST_F(ContentViewTest, AWindowThatClosesInTheMiddleOfEverythingLeavesNothing) {
    makeColourTables();
    for (int i = 0; i < 5; ++i) {
        auto closing = std::make_unique<StillwickWindow>();
        closing->show();
        closing->openFile(sampleFilm().toLocalFile());
        runFor(std::chrono::milliseconds(i * 60));
        closing->state().captureCurrentFrame();
        closing->state().togglePlayPause();
        runFor(std::chrono::milliseconds(i * 30));
    }
    runFor(50ms);
}

TEST_F(ContentViewTest, TheProgramStaysUntilAnExportIsDone) {
    window.reset();
    const auto gate = std::make_shared<GateSegmenter>();
    auto exporting = stateWith(gate);
    load(*exporting);
    captureAt(*exporting, 500);
    gate->open(1);
    finish(*exporting);
    exporting->setOutputFolder(QUrl::fromLocalFile(folder.path()));
    exporting->runExport(ExportMode::merged);
    bool isOpened = false;
    QTimer::singleShot(20ms, [&exporting] {
        exporting.reset();
        QWidget last;
        last.show();
        last.close();
    });
    QTimer::singleShot(300ms, [&] {
        isOpened = true;
        gate->open(1);
    });
    QApplication::exec();
    EXPECT_TRUE(isOpened) << "the last window's closing did not end the program";
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("balles_00-00-00-500.png"))));
}

} // namespace

} // namespace stillwick::testing
