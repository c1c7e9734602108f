// Projects as text and back.
#include "SampleProject.h"

#include <QJsonObject>

#include <bit>
#include <limits>
#include <random>
#include <vector>

namespace stillwick::testing {

namespace {

using Category = ProjectError::Category;

TEST(ProjectJsonTest, ADocumentWrittenByHandIsReadWhole) {
    EXPECT_EQ(decodeProject(whole), wholeProject());
}

TEST(ProjectJsonTest, WhatIsWrittenReadsBackTheSame) {
    EXPECT_EQ(decodeProject(encodeProject(wholeProject())), wholeProject());
    EXPECT_EQ(decodeProject(encodeProject(ProjectFile())), ProjectFile());
}

TEST(ProjectJsonTest, KeysAscendOneALineAndFieldsWithoutAValueAreLeftOut) {
    EXPECT_EQ(encodeProject(ProjectFile()), R"({
  "activeGroupIndex": 0,
  "cropToSubject": false,
  "edge": {
    "a": 0,
    "b": 0,
    "feather": 0,
    "g": 0,
    "outline": false,
    "outlineWidth": 0,
    "r": 0,
    "shrink": 0
  },
  "filter": "",
  "groups": [],
  "version": 1,
  "videoName": ""
}
)");
}

TEST(ProjectJsonTest, ListsAndObjectsStandIndentedWithinOneAnother) {
    ProjectFile project = wholeProject();
    project.groups.append({QStringLiteral("vide"), {}, {}});
    const QByteArray text = encodeProject(project);
    EXPECT_TRUE(text.contains(R"(
  "groups": [
    {
      "frames": [
        {
          "annotations": [
            {
              "a": 1,
              "b": 0,
              "end": [
                0.75,
                1
              ],
              "g": 0.5,
              "id": "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9",
              "kind": "circle",
              "lineWidth": 0.004,
              "r": 1,
              "start": [
                0.25,
                0
              ]
            }
          ],
          "notes": "vue de face",
          "timeScale": 30000,
          "timeValue": 1001
        }
      ],
      "name": "Plan A/B",
      "notes": "deux\nlignes"
    },
    {
      "frames": [],
      "name": "vide",
      "notes": ""
    }
  ],
)")) << text.toStdString();
}

TEST(ProjectJsonTest, AnotherReaderFindsTheSameValues) {
    const QJsonObject project = readByQt(encodeProject(wholeProject()));
    EXPECT_EQ(project, readByQt(whole));
    ProjectFile strange = wholeProject();
    for (char16_t character = 0; character < 0x300; ++character)
        strange.videoName += QChar(character);
    EXPECT_EQ(readByQt(encodeProject(strange))[QStringLiteral("videoName")].toString(),
              strange.videoName);
}

TEST(ProjectJsonTest, BookmarksAndIdentifiersHaveTheirStandardForms) {
    const QByteArray text = encodeProject(wholeProject());
    EXPECT_TRUE(text.contains("\"outputFolderBookmark\": \"AAEC/w==\""));
    EXPECT_TRUE(text.contains("\"videoBookmark\": \"c3RpbGw=\""));
    EXPECT_TRUE(text.contains("\"id\": \"0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9\""));
    EXPECT_TRUE(text.contains("\"videoName\": \"été\""));
}

TEST(ProjectJsonTest, WholeNumbersAreExactOverAllTheirBits) {
    ProjectFile project = wholeProject();
    for (const qint64 value :
         {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max(),
          qint64(9007199254740993), qint64(-1), qint64(0)}) {
        project.groups[0].frames[0].timeValue = value;
        project.groups[0].frames[0].timeScale = std::numeric_limits<qint32>::min();
        const QByteArray text = encodeProject(project);
        EXPECT_TRUE(text.contains("\"timeScale\": -2147483648,\n"));
        EXPECT_TRUE(text.contains("\"timeValue\": " + QByteArray::number(value) + '\n'));
        EXPECT_EQ(decodeProject(text), project);
    }
}

TEST(ProjectJsonTest, OtherNumbersReadBackToTheSameBits) {
    std::mt19937_64 random(11);
    ProjectFile project = wholeProject();
    std::vector<double> numbers{0.0,
                                -0.0,
                                0.1,
                                std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::min(),
                                -std::numeric_limits<double>::max(),
                                9007199254740993.0,
                                1e23};
    for (int i = 0; i < 2000; ++i)
        numbers.push_back(std::bit_cast<double>(random()));
    for (const double number : numbers) {
        if (!std::isfinite(number))
            continue;
        project.edge.shrink = number;
        const QByteArray text = encodeProject(project);
        const double back = decodeProject(text).edge.shrink;
        ASSERT_EQ(std::bit_cast<quint64>(back), std::bit_cast<quint64>(number)) << number;
        const double byQt =
            readByQt(text)[QStringLiteral("edge")][QStringLiteral("shrink")].toDouble();
        ASSERT_EQ(byQt, number);
    }
}

TEST(ProjectJsonTest, NumbersAreReadHoweverJsonWritesThem) {
    EXPECT_EQ(decodeProject(with("2.5", "25e-1")), wholeProject());
    EXPECT_EQ(decodeProject(with("2.5", "0.25E+1")), wholeProject());
    EXPECT_EQ(decodeProject(with("\"timeValue\": 1001", "\"timeValue\": 1001.0")), wholeProject());
}

TEST(ProjectJsonTest, ANumberThatIsNoneCannotBeWritten) {
    ProjectFile project = wholeProject();
    project.groups[0].frames[0].annotations->first().end.setX(
        std::numeric_limits<double>::quiet_NaN());
    EXPECT_THROW((void)encodeProject(project), ProjectError);
    project = wholeProject();
    project.edge.feather = std::numeric_limits<double>::infinity();
    try {
        (void)encodeProject(project);
        ADD_FAILURE();
    } catch (const ProjectError& error) {
        EXPECT_EQ(error.category(), Category::NotEncodable);
    }
}

TEST(ProjectJsonTest, WithoutFilmAndFolderNeitherKeyIsThere) {
    ProjectFile project = wholeProject();
    project.videoBookmark.reset();
    project.outputFolderBookmark.reset();
    const QByteArray text = encodeProject(project);
    EXPECT_FALSE(text.contains("Bookmark"));
    EXPECT_EQ(decodeProject(text), project);
}

TEST(ProjectJsonTest, NullIsAsGoodAsAbsentWhereAFieldIsOptional) {
    EXPECT_FALSE(decodeProject(with("\"AAEC/w==\"", "null")).outputFolderBookmark);
    EXPECT_EQ(faultIn(with("\"comic\"", "null")).description(),
              "La clé « filter » doit être un texte.");
}

TEST(ProjectJsonTest, AnAbsentListOfMarksAndAnEmptyOneBothLoad) {
    const auto frameOf = [](const char* annotations) {
        const QByteArray text = QByteArray(R"({"activeGroupIndex":0,"cropToSubject":false,
            "edge":{"a":1,"b":1,"feather":0,"g":1,"outline":false,"outlineWidth":6,"r":1,"shrink":0},
            "filter":"none","groups":[{"name":"","notes":"","frames":[{)") +
                                annotations +
                                R"("notes":"","timeScale":1,"timeValue":2}]}],"version":1,
            "videoName":"video"})";
        return decodeProject(text).groups[0].frames[0];
    };
    EXPECT_FALSE(frameOf("").annotations);
    EXPECT_TRUE(frameOf("\"annotations\":[],").annotations->isEmpty());
    EXPECT_FALSE(frameOf("\"annotations\":null,").annotations);
}

TEST(ProjectJsonTest, AnEmptyListOfGroupsAnUnknownKeyAnotherVersionAndAnUnknownStyleAreRead) {
    EXPECT_EQ(decodeProject(with("\"version\": 1", "\"version\": 2, \"new\": [{}]")).version, 2);
    EXPECT_EQ(decodeProject(with("\"comic\"", "\"watercolour\"")).filter, "watercolour");
    ProjectFile project = wholeProject();
    project.groups.clear();
    EXPECT_EQ(decodeProject(encodeProject(project)), project);
}

TEST(ProjectJsonTest, AnIdentifierIsReadInEitherCase) {
    EXPECT_EQ(decodeProject(with("0A1B2C3D-4E5F", "0a1b2c3d-4e5f")), wholeProject());
}

} // namespace

} // namespace stillwick::testing
