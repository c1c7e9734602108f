// The cut-out copied and dragged to other programs.
#include "SampleState.h"

#include "Stillwick/AnnotationCanvas.h"
#include "Stillwick/BigPreview.h"
#include "Stillwick/CutoutMimeData.h"
#include "Stillwick/ExtractionPreviewView.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>

namespace stillwick::testing {

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class CutoutCopyTest : public ::testing::Test {
protected:
    CutoutCopyTest() {
        view.resize(340, 600);
        view.show();
        view.activateWindow();
        load(*state);
        captureAt(*state, 1000);
        EXPECT_TRUE(runUntil([this] { return !preview().image().isNull(); }));
    }

    [[nodiscard]] BigPreview& preview() const { return view.bigPreview(); }
    void copy() {
        QGuiApplication::clipboard()->clear();
        preview().setFocus();
        QTest::keyClick(&preview(), Qt::Key_C, Qt::ControlModifier);
    }
    /// The one file of a merged export.
    QFileInfo exported() {
        state->setOutputFolder(QUrl::fromLocalFile(folder.path()));
        state->runExport(ExportMode::merged);
        EXPECT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
        return QDir(folder.path()).entryInfoList({QStringLiteral("*.png")}).value(0);
    }
    static const QMimeData& copied() { return *QGuiApplication::clipboard()->mimeData(); }

    QTemporaryDir folder;
    std::unique_ptr<AppState> state =
        stateWith(std::make_shared<ColumnSegmenter>(std::vector{90, 60}));
    ExtractionPreviewView view{*state};
};

TEST_F(CutoutCopyTest, WhatIsCopiedIsTheVeryFileThatAnExportWrites) {
    Annotation mark;
    mark.end = {1, 1};
    mark.r = mark.a = 1;
    mark.lineWidth = 0.01;
    state->setAnnotations({mark}, state->previewFrame()->id());
    state->setSelectedFilter(FilterStyle::poster);
    EdgeOptions edges;
    edges.outline = true;
    state->setEdgeOptions(edges);
    for (const bool crop : {false, true}) {
        state->setCropToSubject(crop);
        copy();
        const QByteArray png = copied().data(CutoutMimeData::pngType);
        EXPECT_FALSE(png.isEmpty());
        EXPECT_EQ(png, contentOf(exported().filePath())) << crop;
    }
}

TEST_F(CutoutCopyTest, ItIsAlsoAFileUnderTheNameOfTheExport) {
    copy();
    ASSERT_EQ(copied().urls().size(), 1);
    const QFileInfo file(copied().urls().front().toLocalFile());
    const QFileInfo written = exported();
    EXPECT_EQ(file.fileName(), written.fileName());
    EXPECT_NE(file.path(), written.path());
    EXPECT_EQ(contentOf(file.filePath()), contentOf(written.filePath()));
}

TEST_F(CutoutCopyTest, ThePictureOutlivesItsState) {
    const CapturedFrame frame = *state->previewFrame();
    const CutoutMimeData data(state->exportedPNG(frame), state->exportedName(frame));
    const QByteArray expected = contentOf(exported().filePath());
    const auto other = std::make_unique<AppState>();
    const CutoutMimeData late(other->exportedPNG(frame), QStringLiteral("x.png"));
    EXPECT_EQ(data.data(CutoutMimeData::pngType), expected);
    EXPECT_EQ(late.data(CutoutMimeData::pngType), expected);
}

TEST_F(CutoutCopyTest, WithoutASubjectThereIsNothingToCopy) {
    state->deleteFrame(state->previewFrame()->id());
    copy();
    const QMimeData* const onClipboard = QGuiApplication::clipboard()->mimeData();
    EXPECT_TRUE(onClipboard == nullptr || onClipboard->formats().isEmpty());
    const CutoutMimeData nothing(state->exportedPNG(CapturedFrame(CMTime::zero(), {}, {})),
                                 QStringLiteral("x.png"));
    EXPECT_TRUE(nothing.data(CutoutMimeData::pngType).isEmpty());
    EXPECT_TRUE(nothing.urls().isEmpty());
}

TEST_F(CutoutCopyTest, InTheNoteTheSameKeysCopyText) {
    auto* const note = view.findChild<QPlainTextEdit*>();
    note->setPlainText(QStringLiteral("un mot"));
    note->setFocus();
    note->selectAll();
    QTest::keyClick(note, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(copied().text(), QStringLiteral("un mot"));
    EXPECT_FALSE(copied().hasFormat(CutoutMimeData::pngType));
}

TEST_F(CutoutCopyTest, AClickOnThePictureGivesItTheKeyboard) {
    view.findChild<QPlainTextEdit*>()->setFocus();
    QTest::mouseClick(&preview().canvas(), Qt::LeftButton);
    EXPECT_TRUE(preview().hasFocus());
}

} // namespace

} // namespace stillwick::testing
