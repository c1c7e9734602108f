// The preview: renders, marks, note.
#include "GateSegmenter.h"
#include "SampleState.h"

#include "Interface/EmptyPanel.h"
#include "Interface/ProgressIndicator.h"
#include "Stillwick/AnnotationCanvas.h"
#include "Stillwick/BigPreview.h"
#include "Stillwick/ExtractionPreviewView.h"
#include "Stillwick/StylesStrip.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using Content = StyleButton::Content;

class ExtractionPreviewViewTest : public ::testing::Test {
protected:
    ExtractionPreviewViewTest() {
        view.resize(340, 600);
        view.show();
    }

    void capture() {
        load(*state);
        captureAt(*state, 1000);
    }
    void waitForRenders() {
        ASSERT_TRUE(runUntil([this] { return !view.bigPreview().image().isNull(); }));
    }
    [[nodiscard]] bool isEmptyPanelShown() const {
        return view.bigPreview().findChild<EmptyPanel*>()->isVisible();
    }
    [[nodiscard]] QAbstractButton& deleteButton() const {
        for (auto* each : view.findChildren<QAbstractButton*>())
            if (each->toolTip().startsWith(QStringLiteral("Supprimer l'annotation")))
                return *each;
        throw std::runtime_error("no such button");
    }
    [[nodiscard]] QPlainTextEdit& note() const { return *view.findChild<QPlainTextEdit*>(); }

    std::shared_ptr<GateSegmenter> gate = std::make_shared<GateSegmenter>();
    std::unique_ptr<AppState> state = stateWith(gate);
    ExtractionPreviewView view{*state};
};

TEST_F(ExtractionPreviewViewTest, WithoutACaptureThereIsNoToolbarNoNoteAndABareStrip) {
    EXPECT_TRUE(isEmptyPanelShown());
    EXPECT_FALSE(note().isVisible());
    EXPECT_FALSE(deleteButton().isVisible());
    for (const FilterStyle style : allFilterStyles)
        EXPECT_EQ(view.stylesStrip().button(style).content(), Content::nothing);
}

TEST_F(ExtractionPreviewViewTest, AFreshCaptureShowsNothingThenProgressThenThePicture) {
    capture();
    EXPECT_TRUE(isEmptyPanelShown());
    EXPECT_TRUE(note().isVisible());
    gate->open(1);
    ASSERT_TRUE(runUntil([this] { return !isEmptyPanelShown(); }));
    EXPECT_TRUE(view.bigPreview().findChild<ProgressIndicator*>()->isVisible());
    EXPECT_EQ(view.stylesStrip().button(FilterStyle::comic).content(), Content::progress);
    waitForRenders();
    EXPECT_FALSE(view.bigPreview().findChild<ProgressIndicator*>()->isVisible());
    for (const FilterStyle style : allFilterStyles)
        EXPECT_EQ(view.stylesStrip().button(style).content(), Content::picture);
}

TEST_F(ExtractionPreviewViewTest, ACaptureWithoutASubjectKeepsThePanel) {
    const auto blind = stateWith(blindSegmenter());
    ExtractionPreviewView preview(*blind);
    preview.show();
    load(*blind);
    captureAt(*blind, 0);
    finish(*blind);
    runFor(20ms);
    EXPECT_TRUE(preview.bigPreview().findChild<EmptyPanel*>()->isVisible());
    EXPECT_EQ(preview.stylesStrip().button(FilterStyle::none).content(), Content::nothing);
}

TEST_F(ExtractionPreviewViewTest, ThePictureIsWhatTheStateRenders) {
    capture();
    gate->open(1);
    waitForRenders();
    const QImage subject = state->previewFrame()->subjectPreview.image();
    EXPECT_EQ(view.bigPreview().image(), subject);
    view.stylesStrip().button(FilterStyle::poster).click();
    EXPECT_EQ(state->selectedFilter(), FilterStyle::poster);
    EXPECT_EQ(view.bigPreview().image(),
              ExtractRenderer::make().render(subject, FilterStyle::poster, EdgeParams::identity()))
        << "at once: it was rendered with the others";
}

TEST_F(ExtractionPreviewViewTest, AScreenReaderChoosesAStyle) {
    QAccessibleInterface* const button =
        QAccessible::queryAccessibleInterface(&view.stylesStrip().button(FilterStyle::comic));
    EXPECT_EQ(button->role(), QAccessible::RadioButton);
    button->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(state->selectedFilter(), FilterStyle::comic);
    state->setSelectedFilter(FilterStyle::sketch);
    EXPECT_TRUE(view.stylesStrip().button(FilterStyle::sketch).isChecked());
    EXPECT_FALSE(button->state().checked);
}

TEST_F(ExtractionPreviewViewTest, AnEdgeSettingRendersAgainAStyleOrANoteDoesNot) {
    capture();
    gate->open(1);
    waitForRenders();
    RenderCache cache(*state);
    QSignalSpy changed(&cache, &RenderCache::rendersChanged);
    ASSERT_TRUE(runUntil([&] { return changed.size() == 1; }));
    state->setSelectedFilter(FilterStyle::comic);
    state->setNote(QStringLiteral("note"), state->previewFrame()->id());
    state->setAnnotations({Annotation()}, state->previewFrame()->id());
    runFor(100ms);
    EXPECT_EQ(changed.size(), 1);
    EdgeOptions options;
    options.shrink = 4;
    state->setEdgeOptions(options);
    ASSERT_TRUE(runUntil([&] { return changed.size() == 2; }));
    EXPECT_EQ(cache.render(FilterStyle::none),
              ExtractRenderer::make().render(state->previewFrame()->subjectPreview.image(),
                                             FilterStyle::none, options.params()));
}

TEST_F(ExtractionPreviewViewTest, ASettingThatChangesWithoutAPauseIsFollowed) {
    capture();
    gate->open(1);
    waitForRenders();
    RenderCache cache(*state);
    QSignalSpy changed(&cache, &RenderCache::rendersChanged);
    ASSERT_TRUE(runUntil([&] { return changed.size() == 1; }));
    EdgeOptions options;
    const QDeadlineTimer end(4s);
    while (!end.hasExpired()) { // a slider on its way
        options.shrink += 0.01;
        state->setEdgeOptions(options);
        runFor(10ms);
    }
    EXPECT_GE(changed.size(), 3) << "something is seen to change";
    options.shrink = 9; // tenths make a difference
    state->setEdgeOptions(options);
    ASSERT_TRUE(runUntil([&] {
        return cache.render(FilterStyle::none) ==
               ExtractRenderer::make().render(state->previewFrame()->subjectPreview.image(),
                                              FilterStyle::none, options.params());
    })) << "and the last setting is the one that stays";
}

TEST_F(ExtractionPreviewViewTest, TheKeyNamesCaptureSubjectAndEdges) {
    const RenderCache cache(*state);
    EXPECT_EQ(cache.previewKey(), QStringLiteral("none"));
    capture();
    const QString id = state->previewFrame()->id().toString(QUuid::WithoutBraces).toUpper();
    EXPECT_EQ(cache.previewKey(),
              id + QStringLiteral("-false-") + state->edgeOptions().signature());
    gate->open(1);
    finish(*state);
    EXPECT_EQ(cache.previewKey(), id + QStringLiteral("-true-") + state->edgeOptions().signature());
}

TEST_F(ExtractionPreviewViewTest, TheCanvasLiesExactlyOverThePicture) {
    capture();
    gate->open(1);
    waitForRenders();
    const BigPreview& preview = view.bigPreview();
    EXPECT_EQ(preview.canvas().geometry(), preview.imageRect());
    const QRect room = preview.rect().adjusted(8, 8, -8, -8);
    EXPECT_TRUE(room.contains(preview.imageRect()));
    EXPECT_TRUE(preview.imageRect().width() == room.width() ||
                preview.imageRect().height() == room.height());
}

TEST_F(ExtractionPreviewViewTest, MarksDrawnAreTheCaptures) {
    capture();
    gate->open(1);
    waitForRenders();
    AnnotationCanvas& canvas = view.bigPreview().canvas();
    emit canvas.annotationsEdited({Annotation()});
    ASSERT_EQ(state->previewFrame()->annotations.size(), 1);
    const QUuid mark = state->previewFrame()->annotations.front().id;
    EXPECT_FALSE(deleteButton().isEnabled());
    emit canvas.selectionEdited(mark);
    EXPECT_TRUE(deleteButton().isEnabled());
    deleteButton().click();
    EXPECT_TRUE(state->previewFrame()->annotations.isEmpty());
    EXPECT_FALSE(deleteButton().isEnabled());
}

TEST_F(ExtractionPreviewViewTest, AMarkThatIsBeingDrawnDoesNotGoToAnotherCapture) {
    capture();
    gate->open(1);
    waitForRenders();
    const QUuid first = state->previewFrame()->id();
    AnnotationCanvas& canvas = view.bigPreview().canvas();
    canvas.setTool(AnnotationTool::line);
    QTest::mousePress(&canvas, Qt::LeftButton, {}, {10, 10});
    QMouseEvent move(QEvent::MouseMove, QPointF(30, 30), canvas.mapToGlobal(QPointF(30, 30)),
                     Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&canvas, &move);
    ASSERT_TRUE(canvas.draft());
    captureAt(*state, 2000); // by its key, with the button held
    QTest::mouseRelease(&canvas, Qt::LeftButton, {}, {30, 30});
    EXPECT_TRUE(frameIn(*state, first).annotations.isEmpty());
    EXPECT_TRUE(state->previewFrame()->annotations.isEmpty());
}

TEST_F(ExtractionPreviewViewTest, AnotherCaptureClearsTheSelectedMarkAndShowsItsNote) {
    capture();
    const QUuid first = state->previewFrame()->id();
    state->setNote(QStringLiteral("première"), first);
    emit view.bigPreview().canvas().selectionEdited(QUuid::createUuid());
    captureAt(*state, 2000);
    EXPECT_FALSE(deleteButton().isEnabled());
    EXPECT_EQ(note().toPlainText(), QString());
    note().setPlainText(QStringLiteral("seconde"));
    state->setSelection({first});
    EXPECT_EQ(note().toPlainText(), QStringLiteral("première"));
    EXPECT_EQ(state->allFrames().back().notes, QStringLiteral("seconde"));
}

TEST_F(ExtractionPreviewViewTest, NothingIsTypedIntoTheNoteOfAWindowBehindWhoseLastCaptureIsGone) {
    capture();
    view.activateWindow();
    note().setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    ASSERT_EQ(QApplication::focusWidget(), &note());
    QWidget front;
    front.show();
    front.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&front));
    state->deleteFrame(state->previewFrame()->id());
    QTest::keyClick(view.windowHandle(), Qt::Key_C);
    EXPECT_EQ(note().toPlainText(), QString());
}

} // namespace

} // namespace stillwick::testing
