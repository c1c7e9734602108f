#include "Stillwick/CaptureGroup.h"
#include "Stillwick/CapturedFrame.h"

#include <gtest/gtest.h>

#include <QSet>

#include <type_traits>

namespace stillwick {

namespace {

CapturedFrame newFrame() {
    return {CMTime::make(1001, 30000), QImage(), QImage()};
}

// What identifies a capture cannot be assigned from outside, yet captures can.
static_assert(std::is_same_v<decltype(newFrame().id()), const QUuid&>);
static_assert(std::is_same_v<decltype(newFrame().time()), const CMTime&>);
static_assert(std::is_copy_assignable_v<CapturedFrame> && std::is_copy_assignable_v<CaptureGroup>);

TEST(CapturedFrameTest, ANewCaptureAwaitsItsPictureAndHasNoNotes) {
    const CapturedFrame frame = newFrame();
    EXPECT_EQ(frame.time(), CMTime::make(1001, 30000));
    EXPECT_TRUE(frame.thumbnail.isNull());
    EXPECT_TRUE(frame.subjectPreview.isNull());
    EXPECT_FALSE(frame.subjectExtracted);
    EXPECT_TRUE(frame.notes.isEmpty());
    EXPECT_TRUE(frame.annotations.isEmpty());
}

TEST(CapturedFrameTest, CreationTakesEveryFieldButTheIdentity) {
    const QImage thumbnail(4, 3, QImage::Format_RGB32);
    const QImage preview(2, 1, QImage::Format_RGB32);
    const Annotation mark;
    const CapturedFrame frame(CMTime::make(7, 30), thumbnail, preview, true,
                              QStringLiteral("vue de face"), {mark});
    EXPECT_EQ(frame.thumbnail.size(), QSize(4, 3));
    EXPECT_EQ(frame.subjectPreview.size(), QSize(2, 1));
    EXPECT_TRUE(frame.subjectExtracted);
    EXPECT_EQ(frame.notes, "vue de face");
    EXPECT_EQ(frame.annotations, QList<Annotation>{mark});
}

TEST(CapturedFrameTest, TwoCapturesOfOneTimeAreDifferent) {
    const CapturedFrame a = newFrame();
    const CapturedFrame b = newFrame();
    EXPECT_FALSE(a.id().isNull());
    EXPECT_NE(a.id(), b.id());
    EXPECT_NE(a, b);
}

TEST(CapturedFrameTest, OnlyTheIdentityIsComparedAndHashed) {
    const CapturedFrame frame = newFrame();
    CapturedFrame copy = frame;
    copy.thumbnail = QImage(1, 1, QImage::Format_RGB32);
    copy.subjectPreview = copy.thumbnail;
    copy.subjectExtracted = true;
    copy.notes = QStringLiteral("autre");
    copy.annotations.append(Annotation{});
    EXPECT_EQ(copy, frame);
    EXPECT_EQ(qHash(copy, 5), qHash(frame, 5));
    EXPECT_EQ(qHash(frame, 5), qHash(frame.id(), 5));
}

TEST(CapturedFrameTest, ACopyIsIndependentOfItsOriginal) {
    const CapturedFrame frame = newFrame();
    CapturedFrame copy = frame;
    copy.notes = QStringLiteral("autre");
    EXPECT_TRUE(frame.notes.isEmpty());
}

TEST(CaptureGroupTest, ANewGroupIsEmpty) {
    const CaptureGroup group(QStringLiteral("Captures"));
    EXPECT_FALSE(group.id().isNull());
    EXPECT_EQ(group.name, "Captures");
    EXPECT_TRUE(group.notes.isEmpty());
    EXPECT_TRUE(group.frames.isEmpty());
}

TEST(CaptureGroupTest, GroupsOfTheSameContentAreDifferent) {
    EXPECT_NE(CaptureGroup(QStringLiteral("a")), CaptureGroup(QStringLiteral("a")));
}

TEST(CaptureGroupTest, AnotherNoteOnACaptureMakesNoDifference) {
    const CaptureGroup group(QStringLiteral("a"), {}, {newFrame(), newFrame()});
    CaptureGroup copy = group;
    copy.frames[1].notes = QStringLiteral("vue de face");
    copy.frames[0].subjectExtracted = true;
    EXPECT_EQ(copy, group);
}

TEST(CaptureGroupTest, NameNotesAndCapturesMakeADifference) {
    const CaptureGroup group(QStringLiteral("a"), QStringLiteral("n"), {newFrame(), newFrame()});
    CaptureGroup renamed = group;
    renamed.name = QStringLiteral("b");
    EXPECT_NE(renamed, group);
    CaptureGroup noted = group;
    noted.notes.clear();
    EXPECT_NE(noted, group);
    CaptureGroup reordered = group;
    reordered.frames.swapItemsAt(0, 1);
    EXPECT_NE(reordered, group);
    CaptureGroup shorter = group;
    shorter.frames.removeLast();
    EXPECT_NE(shorter, group);
}

TEST(CaptureGroupTest, TheHashIsThatOfTheIdentityAlone) {
    const CaptureGroup group(QStringLiteral("a"));
    CaptureGroup renamed = group;
    renamed.name = QStringLiteral("b");
    EXPECT_EQ(qHash(renamed, 9), qHash(group, 9));
    EXPECT_EQ(qHash(group, 9), qHash(group.id(), 9));
}

TEST(CaptureGroupTest, RecordsCanBeKeptInSets) {
    const CapturedFrame frame = newFrame();
    const QSet<CapturedFrame> frames{frame, frame, newFrame()};
    EXPECT_EQ(frames.size(), 2);
    const CaptureGroup group(QStringLiteral("a"));
    const QSet<CaptureGroup> groups{group, group};
    EXPECT_EQ(groups.size(), 1);
}

} // namespace

} // namespace stillwick
