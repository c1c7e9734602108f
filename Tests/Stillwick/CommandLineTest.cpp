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

TEST(CommandLine, CaptureTakesSeveralTimesInTheOrderGiven) {
    const Command command = parse({"capture", "match.mp4", "--at", "2", "--at", "1", "-o", "stills",
                                   "--mode", "perSubject", "--crop"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->video, QStringLiteral("match.mp4"));
    EXPECT_EQ(capture->folder, QStringLiteral("stills"));
    EXPECT_EQ(capture->mode, ExportMode::perSubject);
    EXPECT_TRUE(capture->crop);
    ASSERT_EQ(capture->groups.size(), 1U);
    EXPECT_EQ(capture->groups[0].name, QStringLiteral("Captures"));
    ASSERT_EQ(capture->groups[0].captures.size(), 2U);
    EXPECT_EQ(capture->groups[0].captures[0].time.value, 2);
    EXPECT_EQ(capture->groups[0].captures[1].time.value, 1);
}

TEST(CommandLine, CaptureIsMergedAndUncroppedByDefault) {
    const Command command = parse({"capture", "-o", "stills", "--at", "2", "match.mp4"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->mode, ExportMode::merged);
    EXPECT_FALSE(capture->crop);
    EXPECT_EQ(capture->style, FilterStyle::none);
    EXPECT_TRUE(capture->edge.isIdentity());
}

TEST(CommandLine, CaptureTakesAStyleAndAnEdge) {
    const Command command =
        parse({"capture", "a.mp4", "--at", "1", "-o", "x", "--style", "comic", "--shrink", "1.5",
               "--feather", "0,25", "--outline", "12", "--outline-color", "#ff800040"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->style, FilterStyle::comic);
    EXPECT_EQ(capture->edge.shrink, 1.5);
    EXPECT_EQ(capture->edge.feather, 0.25);
    EXPECT_TRUE(capture->edge.outline);
    EXPECT_EQ(capture->edge.outlineWidth, 12);
    EXPECT_EQ(capture->edge.outlineColor, QColor(255, 128, 0, 64));
}

TEST(CommandLine, AnOutlineIsWhiteAndAColourOpaqueUnlessSaid) {
    const Command plain = parse({"capture", "a.mp4", "--at", "1", "-o", "x", "--outline", "6"});
    EXPECT_EQ(std::get<CaptureCommand>(plain).edge.outlineColor, QColor(Qt::white));
    const Command blue = parse({"capture", "a.mp4", "--at", "1", "-o", "x", "--outline", "6",
                                "--outline-color", "#0000Ff"});
    EXPECT_EQ(std::get<CaptureCommand>(blue).edge.outlineColor, QColor(Qt::blue));
}

TEST(CommandLine, ALineBreakBehindAValueMakesItNone) {
    for (const QStringList& option :
         {QStringList{QStringLiteral("--shrink"), QStringLiteral("1\n")},
          QStringList{QStringLiteral("--outline-color"), QStringLiteral("#ffffff\n")},
          QStringList{QStringLiteral("--at"), QStringLiteral("2\n")}})
        EXPECT_TRUE(std::holds_alternative<UsageError>(parseCommandLine(
            QStringLiteral("capture a.mp4 --at 1 -o x --outline 6").split(u' ') + option)))
            << option.front().toStdString();
}

TEST(CommandLine, CapturesGoIntoTheGroupNamedBeforeThem) {
    const Command command =
        parse({"capture", "a.mp4", "--at", "1", "--group", "Plan A", "--at", "2", "--at", "3",
               "--group", "Plan B", "--group", "Plan A", "--at", "4", "-o", "x"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    ASSERT_EQ(capture->groups.size(), 3U);
    EXPECT_EQ(capture->groups[0].name, QStringLiteral("Captures"));
    EXPECT_EQ(capture->groups[0].captures.size(), 1U);
    EXPECT_EQ(capture->groups[1].name, QStringLiteral("Plan A"));
    ASSERT_EQ(capture->groups[1].captures.size(), 3U);
    EXPECT_EQ(capture->groups[1].captures[2].time.value, 4);
    EXPECT_EQ(capture->groups[2].name, QStringLiteral("Plan B"));
    EXPECT_TRUE(capture->groups[2].captures.empty());
}

TEST(CommandLine, ANoteIsForTheCaptureBeforeItAndAGroupNoteForTheOpenGroup) {
    const Command command =
        parse({"capture", "a.mp4", "-o", "x", "--group", "A", "--group-note", "sur A", "--at", "1",
               "--at", "2", "--group", "B", "--note", "sur 2", "--group-note", "sur B"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    ASSERT_EQ(capture->groups.size(), 2U);
    EXPECT_EQ(capture->groups[0].note, QStringLiteral("sur A"));
    EXPECT_EQ(capture->groups[0].captures[0].note, QString());
    EXPECT_EQ(capture->groups[0].captures[1].note, QStringLiteral("sur 2"));
    EXPECT_EQ(capture->groups[1].note, QStringLiteral("sur B"));
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

TEST(CommandLine, CaptureCanSaveItsProject) {
    const Command command =
        parse({"capture", "a.mp4", "--at", "1", "-o", "x", "--save", "été.stillwick"});
    const auto* capture = std::get_if<CaptureCommand>(&command);
    ASSERT_TRUE(capture);
    EXPECT_EQ(capture->project, QStringLiteral("été.stillwick"));
}

TEST(CommandLine, ExportTakesAProjectAndWhereItLikesAFolderAndAMode) {
    Command command = parse({"export", "a.stillwick"});
    const auto* plain = std::get_if<ExportCommand>(&command);
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->project, QStringLiteral("a.stillwick"));
    EXPECT_TRUE(plain->folder.isEmpty());
    EXPECT_EQ(plain->mode, ExportMode::merged);
    command = parse({"export", "-o", "x", "--mode", "perSubject", "a.stillwick"});
    const auto* full = std::get_if<ExportCommand>(&command);
    ASSERT_TRUE(full);
    EXPECT_EQ(full->folder, QStringLiteral("x"));
    EXPECT_EQ(full->mode, ExportMode::perSubject);
}

TEST(CommandLine, ExportRefusesWhatTheProjectDecides) {
    EXPECT_EQ(faultOf({"export"}), QStringLiteral("Le projet manque."));
    EXPECT_EQ(faultOf({"export", "a.stillwick", "--at", "1"}),
              QStringLiteral("Option inconnue : « --at »."));
    EXPECT_EQ(faultOf({"export", "a.stillwick", "--crop"}),
              QStringLiteral("Option inconnue : « --crop »."));
    EXPECT_EQ(faultOf({"still", "a.mp4", "--save", "x"}),
              QStringLiteral("Option inconnue : « --save »."));
    EXPECT_EQ(faultOf({"export", "a.stillwick", "b.stillwick"}),
              QStringLiteral("Argument en trop : « b.stillwick »."));
    EXPECT_EQ(faultOf({"capture", "a.mp4", "--save", "x", "--save", "y"}),
              QStringLiteral("Un seul fichier de projet est possible : « y »."));
}

TEST(CommandLine, WithoutAWordTheWindowIsMeant) {
    EXPECT_TRUE(std::holds_alternative<WindowCommand>(parse({})));
}

TEST(CommandLine, FilesAloneAreForTheWindow) {
    const Command command = parse({"film.mp4", "dossier/séance.stillwick"});
    const auto* window = std::get_if<WindowCommand>(&command);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->files, (QStringList{QStringLiteral("film.mp4"),
                                          QStringLiteral("dossier/séance.stillwick")}));
    EXPECT_EQ(faultOf({"exporter"}), QStringLiteral("Commande inconnue : « exporter »."));
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
        {{"still", "a.mp4", "--at", "1", "-o", "x", "--style", "comic"}, "« --style »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "--style", "Comic"}, "« Comic »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "--shrink", "-1"}, "« -1 »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "--feather", "nan"}, "« nan »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "--outline", "1001"}, "« 1001 »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "--outline", "1e3"}, "« 1e3 »"},
        {{"capture", "a.mp4", "--at", "1", "-o", "x", "--outline-color", "#ffffff"},
         "« --outline »"},
        {{"capture", "a.mp4", "--outline-color", "#fff"}, "« #fff »"},
        {{"capture", "a.mp4", "--outline-color", "red"}, "« red »"},
        {{"capture", "a.mp4", "--note", "trop tôt", "--at", "1"}, "« trop tôt »"},
        {{"capture", "a.mp4", "--at", "1", "--note", "a", "--note", "b"}, "« b »"},
        {{"capture", "a.mp4", "--group-note", "a", "--group-note", "b"}, "« b »"},
        {{"capture", "a.mp4", "--at", "1", "--group"}, "« --group »"},
    };
    for (const auto& [words, named] : cases)
        EXPECT_THAT(faultOf(words).toStdString(), HasSubstr(named));
}

} // namespace
