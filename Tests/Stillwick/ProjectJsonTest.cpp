#include "Stillwick/ProjectJson.h"

#include "Stillwick/ProjectError.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace stillwick {
namespace {

using Category = ProjectError::Category;

/// A document with everything in it, written by hand.
const char* const whole = R"({
    "activeGroupIndex": 1,
    "cropToSubject": true,
    "edge": {"a": 1, "b": 0.25, "feather": 2.5, "g": 0.5, "outline": true, "outlineWidth": 6,
             "r": 1, "shrink": 0},
    "filter": "comic",
    "groups": [
        {"frames": [
            {"annotations": [
                {"a": 1, "b": 0, "end": [0.75, 1], "g": 0.5,
                 "id": "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9", "kind": "circle",
                 "lineWidth": 0.004, "r": 1, "start": [0.25, 0]}],
             "notes": "vue de face", "timeScale": 30000, "timeValue": 1001}],
         "name": "Plan A/B", "notes": "deux\nlignes"}],
    "outputFolderBookmark": "AAEC/w==",
    "version": 1,
    "videoBookmark": "c3RpbGw=",
    "videoName": "été"
})";

ProjectFile wholeProject() {
    ProjectFile project;
    project.videoBookmark = QByteArray("still");
    project.videoName = QStringLiteral("été");
    project.outputFolderBookmark = QByteArray("\0\1\2\xff", 4);
    project.cropToSubject = true;
    project.filter = QStringLiteral("comic");
    project.edge = {0, 2.5, true, 6, 1, 0.5, 0.25, 1};
    project.activeGroupIndex = 1;
    const Annotation mark{.id = QUuid(QStringLiteral("{0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9}")),
                          .kind = AnnotationKind::circle,
                          .start = {0.25, 0},
                          .end = {0.75, 1},
                          .r = 1,
                          .g = 0.5,
                          .b = 0,
                          .a = 1,
                          .lineWidth = 0.004};
    project.groups = {{QStringLiteral("Plan A/B"),
                       QStringLiteral("deux\nlignes"),
                       {{1001, 30000, QStringLiteral("vue de face"), QList<Annotation>{mark}}}}};
    return project;
}

ProjectError faultIn(const QByteArray& text) {
    try {
        (void)decodeProject(text);
    } catch (const ProjectError& error) {
        return error;
    }
    ADD_FAILURE() << "was read: " << text.left(200).toStdString();
    return {Category::NotJson, {}};
}

/// The whole document with one piece of it replaced.
QByteArray with(const char* piece, const char* by) {
    QByteArray text(whole);
    EXPECT_TRUE(text.contains(piece)) << piece;
    return text.replace(text.indexOf(piece), qsizetype(qstrlen(piece)), by);
}

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

/// Another reader's view of the text, as an independent judge of ours.
QJsonObject readByQt(const QByteArray& text) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return document.object();
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

TEST(ProjectJsonTest, EveryWrongValueIsToldWithItsKey) {
    struct Case {
        const char* piece;
        const char* by;
        Category category;
        const char* description;
    };
    const std::vector<Case> cases = {
        {"\"videoName\": \"été\"", "\"videoname\": 1", Category::KeyMissing,
         "La clé « videoName » manque."},
        {"\"shrink\": 0", "\"x\": 0", Category::KeyMissing, "La clé « edge.shrink » manque."},
        {"\"name\": \"Plan A/B\", ", "", Category::KeyMissing, "La clé « groups[0].name » manque."},
        {"\"timeScale\": 30000, ", "", Category::KeyMissing,
         "La clé « groups[0].frames[0].timeScale » manque."},
        {"\"kind\": \"circle\",", "", Category::KeyMissing,
         "La clé « groups[0].frames[0].annotations[0].kind » manque."},
        {"true,\n    \"edge\"", "1,\n    \"edge\"", Category::WrongType,
         "La clé « cropToSubject » doit être « true » ou « false »."},
        {"2.5", "\"2.5\"", Category::WrongType, "La clé « edge.feather » doit être un nombre."},
        {"\"été\"", "7", Category::WrongType, "La clé « videoName » doit être un texte."},
        {"\"activeGroupIndex\": 1", "\"activeGroupIndex\": \"1\"", Category::WrongType,
         "La clé « activeGroupIndex » doit être un nombre entier."},
        {"\"activeGroupIndex\": 1", "\"activeGroupIndex\": 1.5", Category::OutOfRange,
         "La clé « activeGroupIndex » doit être un nombre entier de 64 bits."},
        {"\"timeValue\": 1001", "\"timeValue\": 9223372036854775808", Category::OutOfRange,
         "La clé « groups[0].frames[0].timeValue » doit être un nombre entier de 64 bits."},
        {"\"timeValue\": 1001", "\"timeValue\": 0.5", Category::OutOfRange,
         "La clé « groups[0].frames[0].timeValue » doit être un nombre entier de 64 bits."},
        {"30000", "2147483648", Category::OutOfRange,
         "La clé « groups[0].frames[0].timeScale » doit être un nombre entier de 32 bits."},
        {"2.5", "1e999", Category::OutOfRange,
         "La clé « edge.feather » contient un nombre trop grand ou trop petit."},
        {"2.5", "1e-999", Category::OutOfRange,
         "La clé « edge.feather » contient un nombre trop grand ou trop petit."},
        {"[0.75, 1]", "[0.75, 1, 2]", Category::WrongType,
         "La clé « groups[0].frames[0].annotations[0].end » doit être une liste de deux nombres."},
        {"[0.75, 1]", "0.75", Category::WrongType,
         "La clé « groups[0].frames[0].annotations[0].end » doit être une liste de deux nombres."},
        {"\"version\": 1", "\"version\": true", Category::WrongType,
         "La clé « version » doit être un nombre entier."},
        {"\"timeValue\": 1001", "\"timeValue\": -9223372036854775809", Category::OutOfRange,
         "La clé « groups[0].frames[0].timeValue » doit être un nombre entier de 64 bits."},
        {"\"groups\": [", "\"groups\": {}, \"x\": [", Category::WrongType,
         "La clé « groups » doit être une liste."},
        {"AAEC/w==", "AAEC/x==", Category::UnknownValue,
         "La valeur de la clé « outputFolderBookmark » n'est pas du base64."},
        {"[0.75, 1]", "[0.75]", Category::WrongType,
         "La clé « groups[0].frames[0].annotations[0].end » doit être une liste de deux nombres."},
        {"[0.75, 1]", "[0.75, \"1\"]", Category::WrongType,
         "La clé « groups[0].frames[0].annotations[0].end[1] » doit être un nombre."},
        {"\"circle\"", "\"Circle\"", Category::UnknownValue,
         "La valeur de la clé « groups[0].frames[0].annotations[0].kind » n'est pas une forme "
         "connue."},
        {"0A1B2C3D-", "0A1B2C3D", Category::UnknownValue,
         "La valeur de la clé « groups[0].frames[0].annotations[0].id » n'est pas un identifiant."},
        {"0A1B2C3D-", "GA1B2C3D-", Category::UnknownValue,
         "La valeur de la clé « groups[0].frames[0].annotations[0].id » n'est pas un identifiant."},
        {"AAEC/w==", "AAEC/w", Category::UnknownValue,
         "La valeur de la clé « outputFolderBookmark » n'est pas du base64."},
        {"AAEC/w==", "AAEC\\n/w==", Category::UnknownValue,
         "La valeur de la clé « outputFolderBookmark » n'est pas du base64."},
        {"c3RpbGw=", "é", Category::UnknownValue,
         "La valeur de la clé « videoBookmark » n'est pas du base64."},
        {"{\"a\": 1, \"b\": 0.25", "[{\"a\": 1}], \"x\": {\"b\": 0", Category::WrongType,
         "La clé « edge » doit être un objet."},
    };
    for (const Case& wrong : cases) {
        const ProjectError error = faultIn(with(wrong.piece, wrong.by));
        EXPECT_EQ(error.category(), wrong.category) << wrong.by;
        EXPECT_EQ(error.description(), QString::fromUtf8(wrong.description)) << wrong.by;
    }
}

TEST(ProjectJsonTest, WhatIsNoJsonIsToldWithItsPlace) {
    const auto told = [](const QByteArray& text) {
        const ProjectError error = faultIn(text);
        EXPECT_EQ(error.category(), Category::NotJson);
        return error.description().toStdString();
    };
    const auto syntaxAt = [](int line, int column) {
        return "Le fichier n'est pas un projet lisible : erreur de syntaxe à la ligne " +
               std::to_string(line) + ", caractère " + std::to_string(column) + ".";
    };
    EXPECT_EQ(told(""), "Le fichier est vide.");
    EXPECT_EQ(told("\xff{}"), "Le fichier n'est pas du texte en UTF-8.");
    EXPECT_EQ(told("{\"a\": \"\xed\xa0\x80\"}"), "Le fichier n'est pas du texte en UTF-8.");
    EXPECT_EQ(told("pope"), syntaxAt(1, 1));
    EXPECT_EQ(told(QByteArray(whole) + "}"), syntaxAt(19, 2));
    EXPECT_EQ(told("{\"é\": 01}"), syntaxAt(1, 8));
    EXPECT_EQ(told("{\n\"version\": NaN}"), syntaxAt(2, 12));
    for (const char* text : {"{\"a\": 1,}",
                             "{\"a\": [1,]}",
                             "{,}",
                             "{\"a\" 1}",
                             "{\"a\": +1}",
                             "{\"a\": .5}",
                             "{\"a\": 1.}",
                             "{\"a\": 1e}",
                             "{\"a\": -}",
                             "{'a': 1}",
                             "{\"a\": tru}",
                             "{\"a\": nul}",
                             "{\"a\": \"\n\"}",
                             "{\"a\": \"\\x\"}",
                             "{\"a\": \"\\u12G4\"}",
                             "{\"a\": \"\\uD800\"}",
                             "{\"a\": \"\\uDC00\"}",
                             "{\"a\": \"\\uD800\\u0041\"}",
                             "{\"a\": 1] ",
                             "{\"a\": /**/ 1}"})
        EXPECT_NE(told(text).find("erreur de syntaxe à la ligne 1"), std::string::npos) << text;
    EXPECT_EQ(faultIn("[]").description(),
              "Le fichier n'est pas un projet : son contenu n'est pas un objet.");
}

TEST(ProjectJsonTest, ATextCutShortAnywhereIsToldAsIncomplete) {
    const QByteArray text(whole);
    for (qsizetype length = 1; length < text.size(); ++length) {
        const ProjectError error = faultIn(text.first(length));
        EXPECT_EQ(error.category(), Category::NotJson);
        const bool isCutInACharacter = (text[length] & 0xC0) == 0x80;
        const auto line = 1 + text.first(length).count('\n');
        EXPECT_EQ(error.description(),
                  isCutInACharacter
                      ? QStringLiteral("Le fichier n'est pas du texte en UTF-8.")
                      : QStringLiteral("Le fichier est incomplet : il s'arrête à la ligne %1.")
                            .arg(line));
    }
}

TEST(ProjectJsonTest, AByteOrderMarkAndAnySpaceArePassedOver) {
    EXPECT_EQ(decodeProject("\xEF\xBB\xBF" + QByteArray(whole) + "\r\n\t "), wholeProject());
    EXPECT_EQ(decodeProject(QJsonDocument(readByQt(whole)).toJson(QJsonDocument::Compact)),
              wholeProject());
}

TEST(ProjectJsonTest, EscapesStandForTheirCharacters) {
    const QByteArray escaped = with("\"été\"", R"("\u00e9\t\u00E9\/\uD83D\uDC69\"\\\b\f\r\u0000")");
    EXPECT_EQ(decodeProject(escaped).videoName, QStringLiteral("é\té/👩\"\\\b\f\r") + QChar(u'\0'));
}

TEST(ProjectJsonTest, OfAKeyGivenTwiceTheLastCounts) {
    const ProjectFile project =
        decodeProject(with("\"version\": 1", "\"version\": 1, \"groups\": [], \"version\": 3"));
    EXPECT_EQ(project.version, 3);
    EXPECT_TRUE(project.groups.isEmpty());
    const QByteArray twice = with("\"version\"", "\"videoBookmark\": \"AA==\", \"version\"");
    EXPECT_EQ(decodeProject(twice).videoBookmark, "still");
}

QByteArray nested(int depth) {
    return "{\"x\": " + QByteArray(depth, '[') + QByteArray(depth, ']') + ", " +
           QByteArray(whole).mid(1);
}

TEST(ProjectJsonTest, DeepTextsAreRefusedInGoodOrder) {
    EXPECT_EQ(decodeProject(nested(511)), wholeProject());
    EXPECT_EQ(faultIn(nested(512)).category(), Category::TooDeep);
    EXPECT_EQ(faultIn(nested(10'000'000)).description(),
              "Le fichier imbrique plus de 512 listes : ce n'est pas un projet.");
    QByteArray objects;
    for (int i = 0; i < 1'000'000; ++i)
        objects += "{\"groups\":";
    EXPECT_EQ(faultIn(objects).category(), Category::WrongType);
}

TEST(ProjectJsonTest, LongTextsAreRefusedBothWays) {
    EXPECT_EQ(faultIn(QByteArray(longestProject + 1, ' ')).description(),
              "Le fichier est trop volumineux pour un projet.");
    EXPECT_EQ(faultIn(QByteArray(longestProject, ' ')).category(), Category::NotJson);
    ProjectFile project = wholeProject();
    project.groups[0].notes = QString(longestProject / 2, u'\n'); // two bytes each
    try {
        (void)encodeProject(project);
        ADD_FAILURE();
    } catch (const ProjectError& error) {
        EXPECT_EQ(error.description(), "Le projet est trop volumineux pour être enregistré.");
    }
}

TEST(ProjectJsonTest, TheLongestProjectThatIsWrittenIsRead) {
    ProjectFile project;
    const auto rest = longestProject - encodeProject(project).size();
    project.videoName = QString(rest, u'x');
    const QByteArray text = encodeProject(project);
    EXPECT_EQ(text.size(), longestProject);
    EXPECT_TRUE(decodeProject(text) == project);
    project.videoName += u'x';
    EXPECT_THROW((void)encodeProject(project), ProjectError);
}

TEST(ProjectJsonTest, StrangeNamesComeBackAsTheyWere) {
    ProjectFile project = wholeProject();
    for (const QString& name :
         {QStringLiteral("..\n/\\\"\t"), QString(QChar(0)) + QStringLiteral("x"),
          QString(10'000, QChar(0x202E)), QStringLiteral("👩‍🎨")}) {
        project.groups[0].name = name;
        EXPECT_EQ(decodeProject(encodeProject(project)), project);
    }
}

TEST(ProjectJsonTest, HalfASurrogatePairIsWrittenAsAQuestionMark) {
    ProjectFile project;
    project.videoName = QString(QChar(0xD800)) + QStringLiteral("x");
    EXPECT_EQ(decodeProject(encodeProject(project)).videoName, "?x");
}

/// The projects beside the fuzz targets, one of them hostile.
std::vector<QByteArray> projectsOfTheFuzzer() {
    std::vector<QByteArray> texts;
    const QDir folder(QStringLiteral(STILLWICK_SOURCE_DIR "/Fuzz/projects"));
    for (const QFileInfo& entry : folder.entryInfoList(QDir::Files, QDir::Name)) {
        QFile file(entry.filePath());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        texts.push_back(file.readAll());
    }
    return texts;
}

TEST(ProjectJsonTest, TheProjectsOfTheFuzzerAreReadAndWrittenAgain) {
    const auto texts = projectsOfTheFuzzer();
    EXPECT_GE(texts.size(), 3U);
    for (const QByteArray& text : texts)
        EXPECT_EQ(readByQt(encodeProject(decodeProject(text))), readByQt(text));
}

TEST(ProjectJsonTest, ANumberBeyondAllDoublesUnderAnUnknownKeyIsPassedOver) {
    QFile file(
        QStringLiteral(STILLWICK_SOURCE_DIR "/Fuzz/crashes/number-beyond-doubles.stillwick"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const ProjectFile project = decodeProject(file.readAll());
    EXPECT_EQ(decodeProject(encodeProject(project)), project);
}

/// The text with a few bytes changed, removed or taken from elsewhere in it.
QByteArray mutated(const QByteArray& text, std::mt19937& random) {
    QByteArray mutant = text;
    for (unsigned change = 0; change <= random() % 3; ++change) {
        const auto at = qsizetype(random() % unsigned(mutant.size()));
        switch (random() % 3) {
        case 0:
            mutant[at] = char(random());
            break;
        case 1:
            mutant.remove(at, 1 + qsizetype(random() % 20));
            break;
        default:
            mutant.insert(at, text.mid(qsizetype(random() % unsigned(text.size())), 10));
            break;
        }
    }
    return mutant;
}

// A mutated text is read or refused; nothing else happens, and what was read can be kept.
TEST(ProjectJsonTest, TenThousandMutationsAreReadOrRefused) {
    auto texts = projectsOfTheFuzzer();
    texts.emplace_back(whole);
    std::mt19937 random(3);
    int refused = 0;
    for (int round = 0; round < 10'000; ++round) {
        const QByteArray mutant = mutated(texts[std::size_t(round) % texts.size()], random);
        try {
            const ProjectFile project = decodeProject(mutant);
            ASSERT_TRUE(decodeProject(encodeProject(project)) == project) << mutant.toStdString();
        } catch (const ProjectError& error) {
            ++refused;
            ASSERT_FALSE(error.description().isEmpty());
        }
    }
    EXPECT_GT(refused, 2'000);
    EXPECT_LT(refused, 9'900);
}

} // namespace
} // namespace stillwick
