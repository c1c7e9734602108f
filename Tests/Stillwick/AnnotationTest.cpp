#include "Stillwick/Annotation.h"

#include <gtest/gtest.h>

#include <QSet>

#include <cmath>
#include <functional>
#include <vector>

namespace stillwick {

namespace {

Annotation someMark() {
    return {.kind = AnnotationKind::line,
            .start = {0.1, 0.2},
            .end = {0.3, 0.4},
            .r = 0.5,
            .g = 0.6,
            .b = 0.7,
            .a = 0.8,
            .lineWidth = 0.004};
}

TEST(AnnotationKindTest, AllKindsComeInTheOrderOfTheirButtons) {
    EXPECT_EQ(allAnnotationKinds,
              (std::array{AnnotationKind::arrow, AnnotationKind::line, AnnotationKind::circle}));
}

TEST(AnnotationKindTest, EachKindHasItsRawValueNameAndSymbol) {
    EXPECT_EQ(rawValue(AnnotationKind::arrow), "arrow");
    EXPECT_EQ(rawValue(AnnotationKind::line), "line");
    EXPECT_EQ(rawValue(AnnotationKind::circle), "circle");
    EXPECT_EQ(displayName(AnnotationKind::arrow), "Flèche");
    EXPECT_EQ(displayName(AnnotationKind::line), "Ligne");
    EXPECT_EQ(displayName(AnnotationKind::circle), "Cercle");
    EXPECT_EQ(systemImage(AnnotationKind::arrow), "arrow.up.right");
    EXPECT_EQ(systemImage(AnnotationKind::line), "line.diagonal");
    EXPECT_EQ(systemImage(AnnotationKind::circle), "circle");
}

TEST(AnnotationKindTest, AKindIsFoundByItsRawValue) {
    EXPECT_EQ(annotationKindFromRawValue(u"arrow"), AnnotationKind::arrow);
    EXPECT_EQ(annotationKindFromRawValue(u"line"), AnnotationKind::line);
    EXPECT_EQ(annotationKindFromRawValue(u"circle"), AnnotationKind::circle);
}

TEST(AnnotationKindTest, AnyOtherTextYieldsNoKind) {
    for (const QStringView text : {u"Arrow", u"", u" arrow", u"arrows", u"Flèche"})
        EXPECT_EQ(annotationKindFromRawValue(text), std::nullopt);
}

TEST(AnnotationTest, EveryNewMarkHasAnIdentityOfItsOwn) {
    EXPECT_FALSE(someMark().id.isNull());
    EXPECT_NE(someMark().id, someMark().id);
}

TEST(AnnotationTest, AGivenIdentityIsKept) {
    const QUuid id(QStringLiteral("{12345678-1234-1234-1234-123456789abc}"));
    EXPECT_EQ((Annotation{.id = id, .start = {}, .end = {}}).id, id);
}

TEST(AnnotationTest, ACopyIsEqualAndHasTheSameHash) {
    const Annotation mark = someMark();
    const Annotation copy = mark;
    EXPECT_EQ(copy, mark);
    EXPECT_EQ(qHash(copy, 3), qHash(mark, 3));
}

TEST(AnnotationTest, ADifferenceInAnyOfTheNineFieldsCounts) {
    const Annotation mark = someMark();
    const std::vector<std::function<void(Annotation&)>> changes{
        [](Annotation& m) { m.id = QUuid::createUuid(); },
        [](Annotation& m) { m.kind = AnnotationKind::circle; },
        [](Annotation& m) { m.start.setY(0.21); },
        [](Annotation& m) { m.end.setX(0.31); },
        [](Annotation& m) { m.r = 0; },
        [](Annotation& m) { m.g = 0; },
        [](Annotation& m) { m.b = 0; },
        [](Annotation& m) { m.a = 0; },
        [](Annotation& m) { m.lineWidth = 0.005; },
    };
    QSet<std::size_t> hashes{qHash(mark)};
    for (const auto& change : changes) {
        Annotation changed = mark;
        change(changed);
        EXPECT_NE(changed, mark);
        hashes.insert(qHash(changed));
    }
    EXPECT_EQ(hashes.size(), 10);
}

TEST(AnnotationTest, PointsThatDifferInTheLastBitAreDifferent) {
    const Annotation mark = someMark();
    Annotation moved = mark;
    moved.start.setX(std::nextafter(0.1, 1.0));
    EXPECT_NE(moved, mark);
}

TEST(AnnotationTest, NegativeZeroIsZeroForEqualityAndHash) {
    Annotation mark = someMark();
    mark.start = {0.0, 0.0};
    Annotation negative = mark;
    negative.start = {-0.0, -0.0};
    EXPECT_EQ(negative, mark);
    EXPECT_EQ(qHash(negative), qHash(mark));
}

} // namespace

} // namespace stillwick
