#include "Stillwick/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace stillwick;

Command parse(const std::vector<const char*>& words) {
    QStringList arguments;
    for (const char* word : words)
        arguments.append(QString::fromUtf8(word));
    return parseCommandLine(arguments);
}

QString faultOf(const std::vector<const char*>& words) {
    const Command command = parse(words);
    const auto* fault = std::get_if<UsageError>(&command);
    return fault ? fault->message : QString();
}

void expectTime(const char* text, std::int64_t value, std::int32_t timescale) {
    const auto time = parseTime(QString::fromUtf8(text));
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(time->value, value) << text;
    EXPECT_EQ(time->timescale, timescale) << text;
}

TEST(CommandLine, SecondsKeepEveryDecimalThatIsWritten) {
    expectTime("0", 0, 1);
    expectTime("83.5", 835, 10);
    expectTime("83,5", 835, 10);
    expectTime("0.123456789", 123456789, 1'000'000'000);
    expectTime("1.0", 10, 10);
}

TEST(CommandLine, DisplayTimesCountMinutesAndHours) {
    expectTime("01:23.500", 83500, 1000);
    expectTime("75:00.000", 4500000, 1000);
    expectTime("1:02:03.250", 3723250, 1000);
    expectTime("1:00:00", 3600, 1);
}

TEST(CommandLine, ExactPairsStandAsTheyAre) {
    expectTime("41750/500", 41750, 500);
    expectTime("0/1", 0, 1);
}

TEST(CommandLine, AnythingElseIsNoTime) {
    for (const char* text : {"", "abc", "-1", "1.", ".5", "1:60", "1:60:00", "1:2:3:4", "1/0",
                             "1/-2", "1/2147483648", "5/2/1", "1e3", " 1", "1.0123456789",
                             "9223372036854775808/1", "9999999999.999999999", "１"})
        EXPECT_FALSE(parseTime(QString::fromUtf8(text))) << text;
}

TEST(CommandLine, CaptureTakesSeveralTimesInTheOrderGiven) {
    const Command command = parse({"capture", "match.mp4", "--at", "2", "--at", "1", "-o", "stills",
                                   "--mode", "perSubject", "--crop"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->video, QStringLiteral("match.mp4"));
    EXPECT_EQ(capture->folder, QStringLiteral("stills"));
    EXPECT_EQ(capture->mode, ExportMode::perSubject);
    EXPECT_TRUE(capture->crop);
    ASSERT_EQ(capture->times.size(), 2U);
    EXPECT_EQ(capture->times[0].value, 2);
    EXPECT_EQ(capture->times[1].value, 1);
}

TEST(CommandLine, CaptureIsMergedAndUncroppedByDefault) {
    const Command command = parse({"capture", "-o", "stills", "--at", "2", "match.mp4"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->mode, ExportMode::merged);
    EXPECT_FALSE(capture->crop);
}

TEST(CommandLine, StillTakesOneTimeAndAFile) {
    const Command command = parse({"still", "--", "--at", "--at", "1"});
    EXPECT_TRUE(std::holds_alternative<UsageError>(command)); // after "--" all words are files
    const Command right = parse({"still", "a.mp4", "--at", "0:01", "-o", "a.png"});
    const auto* still = std::get_if<StillCommand>(&right);
    ASSERT_TRUE(still);
    EXPECT_EQ(still->file, QStringLiteral("a.png"));
    EXPECT_EQ(still->time.value, 1);
}

TEST(CommandLine, AFilmWhoseNameBeginsWithAHyphenComesAfterTwo) {
    const Command command = parse({"still", "--at", "1", "-o", "a.png", "--", "-film.mp4"});
    const auto* still = std::get_if<StillCommand>(&command);
    ASSERT_TRUE(still);
    EXPECT_EQ(still->video, QStringLiteral("-film.mp4"));
}

TEST(CommandLine, WithoutAWordTheWindowIsMeant) {
    EXPECT_TRUE(std::holds_alternative<WindowCommand>(parse({})));
}

TEST(CommandLine, EveryFaultNamesTheWordAtFault) {
    using testing::HasSubstr;
    const std::vector<std::pair<std::vector<const char*>, const char*>> cases = {
        {{"captur"}, "« captur »"},
        {{"capture", "a.mp4", "--fast"}, "« --fast »"},
        {{"capture", "a.mp4", "--at", "abc", "-o", "x"}, "« abc »"},
        {{"capture", "a.mp4", "b.mp4", "--at", "1", "-o", "x"}, "« b.mp4 »"},
        {{"capture", "a.mp4", "--at"}, "« --at »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "--mode", "both"}, "« both »"},
        {{"capture", "--at", "1", "-o", "x"}, "vidéo"},
        {{"capture", "a.mp4", "-o", "x"}, "« --at »"},
        {{"capture", "a.mp4", "--at", "1"}, "« -o »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "-o", "y"}, "« y »"},
        {{"still", "a.mp4", "--at", "1", "--at", "2", "-o", "x"}, "« 2 »"},
        {{"still", "a.mp4", "--at", "1", "-o", "x", "--crop"}, "« --crop »"},
    };
    for (const auto& [words, named] : cases)
        EXPECT_THAT(faultOf(words).toStdString(), HasSubstr(named));
}

} // namespace
