// Texts that are no project, or hardly one.
#include "SampleProject.h"

#include <QDir>
#include <QFile>

#include <random>
#include <string>
#include <vector>

namespace stillwick::testing {

namespace {

using Category = ProjectError::Category;

TEST(ProjectJsonFaultTest, EveryWrongValueIsToldWithItsKey) {
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

TEST(ProjectJsonFaultTest, WhatIsNoJsonIsToldWithItsPlace) {
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

TEST(ProjectJsonFaultTest, ATextCutShortAnywhereIsToldAsIncomplete) {
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

TEST(ProjectJsonFaultTest, AByteOrderMarkAndAnySpaceArePassedOver) {
    EXPECT_EQ(decodeProject("\xEF\xBB\xBF" + QByteArray(whole) + "\r\n\t "), wholeProject());
    EXPECT_EQ(decodeProject(QJsonDocument(readByQt(whole)).toJson(QJsonDocument::Compact)),
              wholeProject());
}

TEST(ProjectJsonFaultTest, EscapesStandForTheirCharacters) {
    const QByteArray escaped = with("\"été\"", R"("\u00e9\t\u00E9\/\uD83D\uDC69\"\\\b\f\r\u0000")");
    EXPECT_EQ(decodeProject(escaped).videoName, QStringLiteral("é\té/👩\"\\\b\f\r") + QChar(u'\0'));
}

TEST(ProjectJsonFaultTest, AByteOrderMarkIsPassedOverBeforeTheProjectAndKeptInItsTexts) {
    const QByteArray marked = with("\"été\"", "\"\xEF\xBB\xBF"
                                              "a\\n\xEF\xBB\xBF"
                                              "b\"");
    EXPECT_EQ(decodeProject("\xEF\xBB\xBF" + marked).videoName, QStringLiteral("\uFEFFa\n\uFEFFb"));
}

TEST(ProjectJsonFaultTest, OfAKeyGivenTwiceTheLastCounts) {
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

TEST(ProjectJsonFaultTest, DeepTextsAreRefusedInGoodOrder) {
    EXPECT_EQ(decodeProject(nested(511)), wholeProject());
    EXPECT_EQ(faultIn(nested(512)).category(), Category::TooDeep);
    EXPECT_EQ(faultIn(nested(10'000'000)).description(),
              "Le fichier imbrique plus de 512 listes : ce n'est pas un projet.");
    QByteArray objects;
    for (int i = 0; i < 1'000'000; ++i)
        objects += "{\"groups\":";
    EXPECT_EQ(faultIn(objects).category(), Category::WrongType);
}

TEST(ProjectJsonFaultTest, LongTextsAreRefusedBothWays) {
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

TEST(ProjectJsonFaultTest, TheLongestProjectThatIsWrittenIsRead) {
    ProjectFile project;
    const auto rest = longestProject - encodeProject(project).size();
    project.videoName = QString(rest, u'x');
    const QByteArray text = encodeProject(project);
    EXPECT_EQ(text.size(), longestProject);
    EXPECT_TRUE(decodeProject(text) == project);
    project.videoName += u'x';
    EXPECT_THROW((void)encodeProject(project), ProjectError);
}

TEST(ProjectJsonFaultTest, StrangeNamesComeBackAsTheyWere) {
    ProjectFile project = wholeProject();
    for (const QString& name :
         {QStringLiteral("..\n/\\\"\t"), QString(QChar(0)) + QStringLiteral("x"),
          QString(10'000, QChar(0x202E)), QStringLiteral("👩‍🎨")}) {
        project.groups[0].name = name;
        EXPECT_EQ(decodeProject(encodeProject(project)), project);
    }
}

TEST(ProjectJsonFaultTest, HalfASurrogatePairIsWrittenAsAQuestionMark) {
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

TEST(ProjectJsonFaultTest, TheProjectsOfTheFuzzerAreReadAndWrittenAgain) {
    const auto texts = projectsOfTheFuzzer();
    EXPECT_GE(texts.size(), 3U);
    for (const QByteArray& text : texts)
        EXPECT_EQ(readByQt(encodeProject(decodeProject(text))), readByQt(text));
}

TEST(ProjectJsonFaultTest, ANumberBeyondAllDoublesUnderAnUnknownKeyIsPassedOver) {
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
TEST(ProjectJsonFaultTest, TenThousandMutationsAreReadOrRefused) {
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

} // namespace stillwick::testing
