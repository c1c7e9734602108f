#include "Stillwick/ExportNaming.h"

#include <gtest/gtest.h>

namespace stillwick {

namespace {

std::string fileName(const char* video, const CMTime& time, std::optional<int> subject = {}) {
    return ExportNaming::fileName(QString::fromUtf8(video), time, subject).toStdString();
}

std::string folderName(const char* name) {
    return ExportNaming::folderName(QString::fromUtf8(name)).toStdString();
}

const CMTime eightyThreeAndAHalf = CMTime::make(835, 10);

TEST(ExportNamingTest, AMergedPictureIsNamedByVideoAndTime) {
    EXPECT_EQ(fileName("match", eightyThreeAndAHalf), "match_00-01-23-500.png");
}

TEST(ExportNamingTest, ASubjectsPictureAlsoBearsItsNumberUnpadded) {
    EXPECT_EQ(fileName("match", eightyThreeAndAHalf, 1), "match_00-01-23-500_s1.png");
    EXPECT_EQ(fileName("match", eightyThreeAndAHalf, 12), "match_00-01-23-500_s12.png");
}

TEST(ExportNamingTest, ASubjectNumberThatIsNotPositiveIsWrittenUnchanged) {
    EXPECT_EQ(fileName("match", eightyThreeAndAHalf, 0), "match_00-01-23-500_s0.png");
    EXPECT_EQ(fileName("match", eightyThreeAndAHalf, -1), "match_00-01-23-500_s-1.png");
}

TEST(ExportNamingTest, TheZeroTimeIsAllZeros) {
    EXPECT_EQ(fileName("video", CMTime::zero()), "video_00-00-00-000.png");
    EXPECT_EQ(fileName("video", CMTime::indefinite()), "video_00-00-00-000.png");
}

TEST(ExportNamingTest, TheVideoNameIsTakenAsItIs) {
    EXPECT_EQ(fileName("a/b: é %1", CMTime::zero(), 2), "a/b: é %1_00-00-00-000_s2.png");
    EXPECT_EQ(fileName("", CMTime::zero()), "_00-00-00-000.png");
}

TEST(ExportNamingTest, SeparatorsOfPathsBecomeHyphens) {
    EXPECT_EQ(folderName("Plan A/B: essai"), "Plan A-B- essai");
    EXPECT_EQ(folderName("a\\b"), "a-b");
    EXPECT_EQ(folderName("a//:\\b"), "a----b");
}

TEST(ExportNamingTest, ANameOfOnlySeparatorsKeepsItsHyphens) {
    EXPECT_EQ(folderName(":"), "-");
    EXPECT_EQ(folderName("/"), "-");
    EXPECT_EQ(folderName("/:\\"), "---");
}

TEST(ExportNamingTest, ANameOfOnlyWhiteSpaceBecomesSansNom) {
    EXPECT_EQ(folderName(""), "Sans-nom");
    EXPECT_EQ(folderName("  "), "Sans-nom");
    EXPECT_EQ(folderName(" \t\r\n "), "Sans-nom");
}

TEST(ExportNamingTest, TrimmingComesAfterTheReplacement) {
    EXPECT_EQ(folderName(" /x"), "-x");
    EXPECT_EQ(folderName("x: "), "x-");
}

// The code points with the property White_Space in PropList.txt of Unicode 15.
TEST(ExportNamingTest, EveryUnicodeWhiteSpaceIsTrimmedAtBothEnds) {
    for (const char16_t space :
         {u'\u0009', u'\u000A', u'\u000B', u'\u000C', u'\u000D', u'\u0020', u'\u0085',
          u'\u00A0', u'\u1680', u'\u2000', u'\u2001', u'\u2002', u'\u2003', u'\u2004',
          u'\u2005', u'\u2006', u'\u2007', u'\u2008', u'\u2009', u'\u200A', u'\u2028',
          u'\u2029', u'\u202F', u'\u205F', u'\u3000'}) {
        const QString padded = QString(QChar(space)) + u'x' + QChar(space);
        EXPECT_EQ(ExportNaming::folderName(padded), "x") << std::hex << int{space};
        EXPECT_EQ(ExportNaming::folderName(QString(3, QChar(space))), "Sans-nom");
    }
}

TEST(ExportNamingTest, InvisibleCharactersThatAreNoWhiteSpaceStay) {
    for (const char16_t character : {u'\u200B', u'\u2060', u'\uFEFF', u'\u180E'}) {
        const QString name(1, QChar(character));
        EXPECT_EQ(ExportNaming::folderName(name), name);
    }
}

TEST(ExportNamingTest, NothingElseIsChanged) {
    EXPECT_EQ(folderName("Été à la plage… n° 1.2*?\"<>|"), "Été à la plage… n° 1.2*?\"<>|");
    EXPECT_EQ(folderName(".."), "..");
    EXPECT_EQ(folderName("a\nb\tc"), "a\nb\tc");
    const std::string longName(400, 'x');
    EXPECT_EQ(folderName(longName.c_str()), longName);
}

} // namespace

} // namespace stillwick
