// Marks on a canvas, against numbers worked out on paper.
#include "Stillwick/AnnotationGeometry.h"
#include "Stillwick/AnnotationTool.h"

#include <gtest/gtest.h>

#include <cmath>

namespace stillwick::testing {

namespace {

using namespace AnnotationGeometry;

Annotation mark(AnnotationKind kind, QPointF start, QPointF end) {
    Annotation result;
    result.kind = kind;
    result.start = start;
    result.end = end;
    return result;
}

TEST(AnnotationGeometry, PointsAreBroughtInsideTheCanvas) {
    const QSizeF canvas(200, 100);
    EXPECT_EQ(normalize({50, 25}, canvas), QPointF(0.25, 0.25));
    EXPECT_EQ(normalize({-3, 130}, canvas), QPointF(0, 1));
    EXPECT_EQ(denormalize({0.25, 0.5}, canvas), QPointF(50, 50));
}

TEST(AnnotationGeometry, ACanvasWithoutAnAreaMapsEveryPointToItsCorner) {
    EXPECT_EQ(normalize({50, 25}, {0, 100}), QPointF(0, 0));
    EXPECT_EQ(normalize({50, 25}, {100, -1}), QPointF(0, 0));
}

TEST(AnnotationGeometry, DistancesToASegmentEndAtItsEnds) {
    // 3-4-5 triangles.
    EXPECT_DOUBLE_EQ(pointToSegment({0.5, 0.3}, {0, 0}, {1, 0}), 0.3);
    EXPECT_DOUBLE_EQ(pointToSegment({1.3, 0.4}, {0, 0}, {1, 0}), 0.5);
    EXPECT_DOUBLE_EQ(pointToSegment({-0.3, -0.4}, {0, 0}, {1, 0}), 0.5);
    EXPECT_DOUBLE_EQ(pointToSegment({0.3, 0.4}, {0, 0}, {0, 0}), 0.5);
}

TEST(AnnotationGeometry, ACircleIsHitNearItsOutlineOnly) {
    const Annotation circle = mark(AnnotationKind::circle, {0.2, 0.2}, {0.8, 0.6});
    // Radii 0.3 and 0.2: a circle of 0.25 around (0.5, 0.4).
    EXPECT_NEAR(distance({0.5, 0.4}, circle), 0.25, 1e-12);
    EXPECT_NEAR(distance({0.75, 0.4}, circle), 0, 1e-12);
    EXPECT_FALSE(hitTest({circle}, {0.5, 0.4}));
    EXPECT_EQ(hitTest({circle}, {0.76, 0.4}), circle.id);
    const Annotation tiny = mark(AnnotationKind::circle, {0.5, 0.5}, {0.52, 0.52});
    EXPECT_EQ(hitTest({tiny}, {0.51, 0.51}), tiny.id);
}

TEST(AnnotationGeometry, TheNearestWithinFourPercentIsHit) {
    const Annotation upper = mark(AnnotationKind::line, {0, 0.40}, {1, 0.40});
    const Annotation lower = mark(AnnotationKind::arrow, {0, 0.46}, {1, 0.46});
    EXPECT_EQ(hitTest({upper, lower}, {0.5, 0.42}), upper.id);
    EXPECT_EQ(hitTest({upper, lower}, {0.5, 0.44}), lower.id);
    EXPECT_FALSE(hitTest({upper, lower}, {0.5, 0.51}));
    EXPECT_FALSE(hitTest({}, {0.5, 0.5}));
}

TEST(AnnotationGeometry, OfTwoAsNearTheEarlierIsHit) {
    const Annotation first = mark(AnnotationKind::line, {0, 0.5}, {1, 0.5});
    const Annotation second = mark(AnnotationKind::line, {0, 0.5}, {1, 0.5});
    EXPECT_EQ(hitTest({first, second}, {0.5, 0.51}), first.id);
    EXPECT_EQ(hitTest({second, first}, {0.5, 0.51}), second.id);
}

TEST(AnnotationGeometry, AnArrowsBarbsLeanBackFromItsPoint) {
    // Stroke 4: barbs of 14 pixels, at 0.45 off the shaft, from the point at (100, 0).
    const QPainterPath head = arrowHead({0, 0}, {100, 0}, 4);
    ASSERT_EQ(head.elementCount(), 4);
    EXPECT_NEAR(head.elementAt(1).x, 100 - 14 * std::cos(0.45), 1e-9);
    EXPECT_NEAR(std::abs(head.elementAt(1).y), 14 * std::sin(0.45), 1e-9);
    EXPECT_NEAR(head.elementAt(3).y, -head.elementAt(1).y, 1e-9);
    const QPainterPath small = arrowHead({0, 0}, {100, 0}, 1);
    EXPECT_NEAR(small.elementAt(1).x, 100 - 8 * std::cos(0.45), 1e-9) << "never below 8 pixels";
}

TEST(AnnotationTool, ToolsComeInTheirOrderWithTheirNames) {
    QStringList names;
    QStringList symbols;
    for (const AnnotationTool tool : allAnnotationTools) {
        names.append(displayName(tool));
        symbols.append(systemImage(tool));
    }
    EXPECT_EQ(names, (QStringList{QStringLiteral("Sélection"), QStringLiteral("Flèche"),
                                  QStringLiteral("Ligne"), QStringLiteral("Cercle")}));
    EXPECT_EQ(symbols, (QStringList{QStringLiteral("cursorarrow"), QStringLiteral("arrow.up.right"),
                                    QStringLiteral("line.diagonal"), QStringLiteral("circle")}));
    EXPECT_EQ(kindOf(AnnotationTool::select), std::nullopt);
    EXPECT_EQ(kindOf(AnnotationTool::circle), AnnotationKind::circle);
}

} // namespace

} // namespace stillwick::testing
