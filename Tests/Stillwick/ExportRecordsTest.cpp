#include "Stillwick/ExportFailure.h"
#include "Stillwick/ExportGroup.h"
#include "Stillwick/ExportMode.h"
#include "Stillwick/ExportProgress.h"

#include <gtest/gtest.h>

#include <QSet>

namespace stillwick {

namespace {

TEST(ExportModeTest, MergedComesBeforePerSubject) {
    EXPECT_EQ(allExportModes, (std::array{ExportMode::merged, ExportMode::perSubject}));
}

TEST(ExportModeTest, ModesCanBeKeptInSets) {
    const QSet<ExportMode> modes{ExportMode::merged, ExportMode::merged, ExportMode::perSubject};
    EXPECT_EQ(modes.size(), 2);
}

TEST(ExportGroupTest, AGroupHoldsWhatItWasMadeOf) {
    const CapturedFrame frame(CMTime::zero(), {}, {}, true, QStringLiteral("vue de face"));
    const ExportGroup group(QStringLiteral("Plan A"), QStringLiteral("notes"), {frame},
                            ExportGroup::Placement::subfolder);
    EXPECT_EQ(group.name(), "Plan A");
    EXPECT_EQ(group.notes(), "notes");
    ASSERT_EQ(group.frames().size(), 1);
    EXPECT_EQ(group.frames().first(), frame);
    EXPECT_EQ(group.frames().first().notes, "vue de face");
    EXPECT_TRUE(group.useSubfolder());
}

TEST(ExportGroupTest, AGroupInTheOutputFolderUsesNoSubfolder) {
    EXPECT_FALSE(ExportGroup({}, {}, {}, ExportGroup::Placement::outputFolder).useSubfolder());
}

TEST(ExportGroupTest, LaterChangesOfACaptureDoNotReachTheSnapshot) {
    QList<CapturedFrame> frames{CapturedFrame(CMTime::zero(), {}, {})};
    const ExportGroup group({}, {}, frames, ExportGroup::Placement::outputFolder);
    frames.first().notes = QStringLiteral("plus tard");
    EXPECT_TRUE(group.frames().first().notes.isEmpty());
}

TEST(ExportProgressTest, IdleIsNothingDoneOfNothing) {
    EXPECT_EQ(ExportProgress::idle.completed, 0);
    EXPECT_EQ(ExportProgress::idle.total, 0);
    EXPECT_FALSE(ExportProgress::idle.isRunning);
    EXPECT_EQ(ExportProgress::idle, ExportProgress{});
}

TEST(ExportProgressTest, TheFractionIsThePartDone) {
    EXPECT_EQ((ExportProgress{3, 4, true}).fraction(), 0.75);
    EXPECT_EQ((ExportProgress{4, 4, false}).fraction(), 1.0);
    EXPECT_EQ((ExportProgress{0, 4, true}).fraction(), 0.0);
}

TEST(ExportProgressTest, TheFractionOfNothingIsZero) {
    EXPECT_EQ(ExportProgress::idle.fraction(), 0.0);
    EXPECT_EQ((ExportProgress{3, 0, true}).fraction(), 0.0);
    EXPECT_EQ((ExportProgress{3, -4, true}).fraction(), 0.0);
}

TEST(ExportFailureTest, TwoFailuresOfTheSameWordsHaveDifferentIdentities) {
    const ExportFailure a{.timestamp = QStringLiteral("01:05.250"), .message = QStringLiteral("m")};
    const ExportFailure b{.timestamp = QStringLiteral("01:05.250"), .message = QStringLiteral("m")};
    EXPECT_FALSE(a.id.isNull());
    EXPECT_NE(a.id, b.id);
}

} // namespace

} // namespace stillwick
