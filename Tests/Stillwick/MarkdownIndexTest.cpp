#include "Stillwick/MarkdownIndex.h"

#include <gtest/gtest.h>

namespace stillwick::MarkdownIndex {
namespace {

const CMTime time = CMTime::make(835, 10);

TEST(MarkdownIndexTest, ALineLinksTheFileAndGivesItsTime) {
    EXPECT_EQ(imageLine(QStringLiteral("match_00-01-23-500.png"), time, {}),
              "- [match_00-01-23-500.png](match_00-01-23-500.png) — 01:23.500");
}

TEST(MarkdownIndexTest, ANoteOfSeveralLinesStandsOnOneQuotedLine) {
    EXPECT_EQ(imageLine(QStringLiteral("a.png"), time, QStringLiteral("\n vue\nde  face \n")),
              "- [a.png](a.png) — 01:23.500\n  > vue de  face");
}

TEST(MarkdownIndexTest, ABlankNoteGivesNoQuote) {
    EXPECT_EQ(imageLine(QStringLiteral("a.png"), time, QStringLiteral(" \n\t \n")),
              "- [a.png](a.png) — 01:23.500");
}

TEST(MarkdownIndexTest, APercentSignInANameIsAPercentSign) {
    EXPECT_EQ(imageLine(QStringLiteral("100%1 %2.png"), time, QStringLiteral("%1")),
              "- [100%1 %2.png](100%1 %2.png) — 01:23.500\n  > %1");
}

TEST(MarkdownIndexTest, AnIndexHasNameNotesAndPictures) {
    EXPECT_EQ(markdown(QStringLiteral("Plan A"), QStringLiteral(" deux\nlignes\n"),
                       {QStringLiteral("- [a.png](a.png) — 00:00.000"),
                        QStringLiteral("- [b.png](b.png) — 00:01.000")}),
              "# Plan A\n\n deux\nlignes\n\n\n## Images\n"
              "- [a.png](a.png) — 00:00.000\n- [b.png](b.png) — 00:01.000\n");
}

TEST(MarkdownIndexTest, WithoutNotesAndPicturesItSaysSo) {
    EXPECT_EQ(markdown(QStringLiteral("Plan/A"), {}, {}),
              "# Plan/A\n\n## Images\n_Aucune image_\n");
}

} // namespace
} // namespace stillwick::MarkdownIndex
