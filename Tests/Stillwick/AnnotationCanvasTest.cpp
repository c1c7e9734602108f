// Drawing, picking and moving marks with the mouse.
#include "Stillwick/AnnotationCanvas.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

namespace stillwick::testing {

namespace {

class AnnotationCanvasTest : public ::testing::Test {
protected:
    AnnotationCanvasTest() {
        canvas.resize(1000, 500);
        canvas.show();
    }

    void drag(const QPoint& from, const QPoint& to) {
        QTest::mousePress(&canvas, Qt::LeftButton, {}, from);
        moveTo((from + to) / 2);
        moveTo(to);
        QTest::mouseRelease(&canvas, Qt::LeftButton, {}, to);
    }
    /// With the button held, which the test library cannot say.
    void moveTo(const QPoint& point) {
        QMouseEvent move(QEvent::MouseMove, point, canvas.mapToGlobal(QPointF(point)), Qt::NoButton,
                         Qt::LeftButton, {});
        QCoreApplication::sendEvent(&canvas, &move);
    }
    static Annotation line(QPointF start, QPointF end) {
        Annotation mark;
        mark.kind = AnnotationKind::line;
        mark.start = start;
        mark.end = end;
        mark.a = 1;
        mark.lineWidth = 0.006;
        return mark;
    }

    AnnotationCanvas canvas;
    QSignalSpy edited{&canvas, &AnnotationCanvas::annotationsEdited};
};

TEST_F(AnnotationCanvasTest, ADrawnArrowIsAddedAndSelectedAndTheDraftGoes) {
    canvas.setTool(AnnotationTool::arrow);
    canvas.setColor(QColor(51, 102, 255, 128));
    canvas.setLineWidth(0.01);
    QTest::mousePress(&canvas, Qt::LeftButton, {}, {100, 100});
    moveTo({300, 200});
    ASSERT_TRUE(canvas.draft());
    EXPECT_EQ(canvas.draft()->end, QPointF(0.3, 0.4));
    EXPECT_TRUE(canvas.annotations().isEmpty());
    QTest::mouseRelease(&canvas, Qt::LeftButton, {}, {300, 200});
    ASSERT_EQ(canvas.annotations().size(), 1);
    const Annotation mark = canvas.annotations().front();
    EXPECT_EQ(mark.kind, AnnotationKind::arrow);
    EXPECT_EQ(mark.start, QPointF(0.1, 0.2));
    EXPECT_EQ(mark.end, QPointF(0.3, 0.4));
    EXPECT_EQ(mark.lineWidth, 0.01);
    EXPECT_NEAR(mark.r, 0.2, 1e-4);
    EXPECT_NEAR(mark.a, 128 / 255.0, 1e-4);
    EXPECT_EQ(canvas.selectedID(), mark.id);
    EXPECT_FALSE(canvas.draft());
    EXPECT_EQ(edited.size(), 1);
}

TEST_F(AnnotationCanvasTest, ADragThatHitsNoMarkDrawsThePictureAwayOnce) {
    QSignalSpy dragged(&canvas, &AnnotationCanvas::pictureDragged);
    canvas.setAnnotations({line({0.1, 0.1}, {0.2, 0.1})});
    drag({600, 300}, {604, 300});
    EXPECT_EQ(dragged.size(), 0) << "not yet far enough";
    QTest::mousePress(&canvas, Qt::LeftButton, {}, {600, 300});
    for (int x = 605; x < 700; x += 5)
        moveTo({x, 300});
    EXPECT_EQ(dragged.size(), 1);
    QTest::mouseRelease(&canvas, Qt::LeftButton, {}, {700, 300});
    drag({150, 50}, {400, 300});
    EXPECT_EQ(dragged.size(), 1) << "a mark is moved";
    canvas.setTool(AnnotationTool::line);
    drag({600, 300}, {700, 400});
    EXPECT_EQ(dragged.size(), 1) << "a mark is drawn";
    EXPECT_EQ(canvas.annotations().size(), 2);
}

TEST_F(AnnotationCanvasTest, APressWithoutAMovementDoesNothing) {
    canvas.setTool(AnnotationTool::circle);
    QTest::mouseClick(&canvas, Qt::LeftButton, {}, {100, 100});
    drag({100, 100}, {101, 101});
    EXPECT_TRUE(canvas.annotations().isEmpty());
    canvas.setTool(AnnotationTool::select);
    const Annotation mark = line({0, 0.2}, {1, 0.2});
    canvas.setAnnotations({mark});
    QTest::mouseClick(&canvas, Qt::LeftButton, {}, {100, 100});
    EXPECT_FALSE(canvas.selectedID());
}

TEST_F(AnnotationCanvasTest, ADragBeyondTheEdgeDrawsToTheEdge) {
    canvas.setTool(AnnotationTool::line);
    drag({500, 250}, {1500, -80});
    ASSERT_EQ(canvas.annotations().size(), 1);
    EXPECT_EQ(canvas.annotations().front().end, QPointF(1, 0));
}

TEST_F(AnnotationCanvasTest, AMovedMarkGoesPastTheEdge) {
    const Annotation mark = line({0.8, 0.5}, {0.9, 0.5});
    canvas.setAnnotations({mark});
    drag({850, 250}, {1000, 250});
    ASSERT_EQ(canvas.annotations().size(), 1);
    EXPECT_NEAR(canvas.annotations().front().start.x(), 0.95, 1e-9);
    EXPECT_NEAR(canvas.annotations().front().end.x(), 1.05, 1e-9);
    EXPECT_EQ(canvas.annotations().front().id, mark.id);
    EXPECT_EQ(canvas.selectedID(), mark.id);
}

TEST_F(AnnotationCanvasTest, ASelectingDragFarFromEveryMarkClearsAndMovesNothing) {
    const Annotation mark = line({0, 0.5}, {1, 0.5});
    canvas.setAnnotations({mark});
    canvas.setSelectedID(mark.id);
    drag({500, 275}, {500, 400}); // begins 0.05 away
    EXPECT_FALSE(canvas.selectedID());
    EXPECT_TRUE(edited.isEmpty());
}

TEST_F(AnnotationCanvasTest, OfTwoLinesAsNearTheEarlierIsMoved) {
    const Annotation first = line({0.1, 0.5}, {0.9, 0.5});
    const Annotation second = line({0.1, 0.5}, {0.9, 0.5});
    canvas.setAnnotations({first, second});
    drag({500, 250}, {500, 350});
    EXPECT_EQ(canvas.selectedID(), first.id);
    EXPECT_NEAR(canvas.annotations()[0].start.y(), 0.7, 1e-9);
    EXPECT_NEAR(canvas.annotations()[1].start.y(), 0.5, 1e-9);
}

TEST_F(AnnotationCanvasTest, ACircleIsPickedByItsOutlineNotByItsMiddle) {
    Annotation circle = line({0.3, 0.3}, {0.7, 0.7});
    circle.kind = AnnotationKind::circle;
    canvas.setAnnotations({circle});
    drag({500, 250}, {510, 250});
    EXPECT_FALSE(canvas.selectedID());
    drag({705, 250}, {715, 250});
    EXPECT_EQ(canvas.selectedID(), circle.id);
}

TEST_F(AnnotationCanvasTest, AnAbandonedDragLeavesNothing) {
    canvas.setTool(AnnotationTool::line);
    QTest::mousePress(&canvas, Qt::LeftButton, {}, {100, 100});
    moveTo({300, 200});
    canvas.abandonDrag();
    EXPECT_FALSE(canvas.draft());
    moveTo({400, 200});
    QTest::mouseRelease(&canvas, Qt::LeftButton, {}, {400, 200});
    EXPECT_TRUE(canvas.annotations().isEmpty());
    EXPECT_TRUE(edited.isEmpty());
}

TEST_F(AnnotationCanvasTest, MarksAreDrawnWhereTheExportDrawsThem) {
    Annotation mark = line({0.25, 0.5}, {0.75, 0.5});
    mark.r = 1;
    mark.lineWidth = 0.02; // 20 pixels
    canvas.setAnnotations({mark});
    QImage shown(canvas.size(), QImage::Format_ARGB32_Premultiplied);
    shown.fill(Qt::white);
    canvas.render(&shown, {}, {}, {});
    EXPECT_EQ(shown.pixelColor(500, 250), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(500, 242), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(500, 235), QColor(Qt::white));
    EXPECT_EQ(shown.pixelColor(245, 250), QColor(Qt::red)) << "the cap is round";
    EXPECT_EQ(shown.pixelColor(235, 250), QColor(Qt::white));
    canvas.setSelectedID(mark.id);
    canvas.render(&shown, {}, {}, {});
    EXPECT_NE(shown.pixelColor(500, 239), QColor(Qt::white)) << "a halo around the selected one";
}

} // namespace

} // namespace stillwick::testing
