// Working states saved and opened again, on a real disk.
#include "SampleState.h"

#include "Stillwick/BatchExportService.h"
#include "Stillwick/ProjectFile.h"
#include "Stillwick/ProjectStore.h"

#include <gtest/gtest.h>

#include <QFile>

#include <array>

namespace stillwick::testing {

namespace {

Annotation circle() {
    Annotation mark;
    mark.kind = AnnotationKind::circle;
    mark.start = {0.1, 0.2};
    mark.end = {0.3, 0.7};
    mark.r = 1.0 / 3;
    mark.a = 1;
    mark.lineWidth = 0.006;
    return mark;
}

GroupDTO groupNamed(const QString& name) {
    return {name, {}, {}};
}

class AppStateProjectTest : public ::testing::Test {
protected:
    [[nodiscard]] QUrl at(const QString& name) const {
        return QUrl::fromLocalFile(m_folder.filePath(name));
    }
    [[nodiscard]] QUrl project() const { return at(QStringLiteral("séance.stillwick")); }

    static std::unique_ptr<AppState> newState() {
        return stateWith(std::make_shared<ColumnSegmenter>(std::vector{90}));
    }
    /// A project on the sample film.
    [[nodiscard]] static ProjectFile file() {
        ProjectFile result;
        result.videoBookmark = ProjectStore::makeBookmark(sampleFilm());
        result.videoName = QStringLiteral("balles");
        result.filter = QStringLiteral("none");
        return result;
    }
    void openFile(const ProjectFile& content) {
        ProjectStore::save(content, project());
        state->openProject(project());
    }

    QTemporaryDir m_folder;
    std::unique_ptr<AppState> state = newState();
};

TEST_F(AppStateProjectTest, EverythingButThePicturesComesBack) {
    load(*state);
    const QUuid first = captureAt(*state, 1500);
    state->setNote(QStringLiteral("Appui « haut »\nsuite"), first);
    state->setAnnotations({circle(), circle()}, first);
    state->setGroupName(QStringLiteral("Départ"), state->activeGroupID());
    state->setGroupNotes(QStringLiteral("Essai 1"), state->activeGroupID());
    state->addGroup();
    const QUuid second = captureAt(*state, 500);
    state->addGroup();
    state->setActiveGroup(state->groups()[1].id());
    state->setSelectedFilter(FilterStyle::comic);
    state->setCropToSubject(true);
    state->setOutputFolder(QUrl::fromLocalFile(m_folder.path()));
    EdgeOptions edge;
    edge.shrink = 1.5;
    edge.outline = true;
    edge.outlineColor = QColor(10, 200, 30, 128);
    state->setEdgeOptions(edge);
    state->saveProject(project());
    ASSERT_EQ(state->errorMessage(), std::nullopt);
    EXPECT_EQ(state->projectURL(), project());

    const auto opened = newState();
    opened->openProject(project());
    EXPECT_EQ(opened->errorMessage(), std::nullopt);
    EXPECT_EQ(opened->projectURL(), project());
    EXPECT_EQ(opened->videoURL(), sampleFilm());
    ASSERT_EQ(opened->groups().size(), 3);
    EXPECT_EQ(opened->groups()[0].name, QStringLiteral("Départ"));
    EXPECT_EQ(opened->groups()[0].notes, QStringLiteral("Essai 1"));
    EXPECT_EQ(opened->groups()[2].name, QStringLiteral("Groupe 3"));
    EXPECT_EQ(opened->activeGroupIndex(), 1);
    EXPECT_NE(opened->groups()[0].id(), state->groups()[0].id()) << "identities are new";
    ASSERT_EQ(opened->frameCount(), 2);
    const CapturedFrame frame = opened->allFrames()[0];
    EXPECT_NE(frame.id(), first);
    EXPECT_EQ(frame.time(), frameIn(*state, first).time());
    EXPECT_EQ(frame.time().timescale, frameIn(*state, first).time().timescale);
    EXPECT_EQ(frame.notes, QStringLiteral("Appui « haut »\nsuite"));
    EXPECT_EQ(frame.annotations, frameIn(*state, first).annotations);
    EXPECT_FALSE(frame.subjectExtracted);
    EXPECT_TRUE(frame.thumbnail.isNull());
    EXPECT_EQ(opened->selectedFilter(), FilterStyle::comic);
    EXPECT_TRUE(opened->cropToSubject());
    EXPECT_EQ(opened->outputFolder(), QUrl::fromLocalFile(m_folder.path()));
    EXPECT_EQ(opened->edgeOptions().params(), edge.params());
    EXPECT_TRUE(opened->selection().isEmpty());

    finish(*opened);
    finish(*state);
    EXPECT_EQ(opened->allFrames()[0].thumbnail.image(), frameIn(*state, first).thumbnail.image());
    EXPECT_EQ(opened->allFrames()[1].subjectPreview.image(),
              frameIn(*state, second).subjectPreview.image());
}

TEST_F(AppStateProjectTest, AProjectOpenedAndSavedIsTheSameFile) {
    load(*state);
    const QUuid id = captureAt(*state, 1500);
    state->setAnnotations({circle()}, id);
    EdgeOptions edge;
    edge.outlineColor = QColor::fromRgbF(0.1F, 0.2F, 0.3F, 0.7F);
    state->setEdgeOptions(edge);
    state->saveProject(project());
    state->openProject(project());
    state->saveProject(at(QStringLiteral("again.stillwick")));
    QFile once(project().toLocalFile());
    QFile again(at(QStringLiteral("again.stillwick")).toLocalFile());
    ASSERT_TRUE(once.open(QIODevice::ReadOnly) && again.open(QIODevice::ReadOnly));
    EXPECT_EQ(once.readAll(), again.readAll());
}

TEST_F(AppStateProjectTest, TheActiveGroupIsTheOneAtTheIndexBroughtIntoRange) {
    ProjectFile content = file();
    for (int i = 0; i < 3; ++i)
        content.groups.append(groupNamed(QString::number(i)));
    const std::pair<qint64, int> cases[] = {
        {7, 2}, {-2, 0}, {1, 1}, {std::numeric_limits<qint64>::max(), 2}};
    for (const auto& [index, expected] : cases) {
        content.activeGroupIndex = index;
        openFile(content);
        EXPECT_EQ(state->activeGroupID(), state->groups()[expected].id()) << index;
    }
}

TEST_F(AppStateProjectTest, AnUnknownStyleOpensAsNone) {
    state->setSelectedFilter(FilterStyle::poster);
    ProjectFile content = file();
    content.filter = QStringLiteral("aquarelle");
    openFile(content);
    EXPECT_EQ(state->selectedFilter(), FilterStyle::none);
    EXPECT_EQ(state->errorMessage(), std::nullopt);
}

TEST_F(AppStateProjectTest, AProjectWithoutGroupsOpensWithOneNamedCaptures) {
    openFile(file());
    ASSERT_EQ(state->groups().size(), 1);
    EXPECT_EQ(state->groups().front().name, QStringLiteral("Captures"));
    EXPECT_EQ(state->activeGroupID(), state->groups().front().id());
}

TEST_F(AppStateProjectTest, WhereTheFilmIsGoneTheGroupsOpenAndTheOldFilmStays) {
    load(*state);
    captureAt(*state, 500);
    const QUrl copy = at(QStringLiteral("copie.mp4"));
    ASSERT_TRUE(QFile::copy(sampleFilm().toLocalFile(), copy.toLocalFile()));
    ProjectFile content = file();
    content.videoBookmark = ProjectStore::makeBookmark(copy);
    content.groups = {groupNamed(QStringLiteral("Ailleurs"))};
    content.groups.front().frames = {{1, 2, QStringLiteral("note"), {}}};
    ASSERT_TRUE(QFile::remove(copy.toLocalFile()));
    openFile(content);
    EXPECT_EQ(state->errorMessage(),
              QStringLiteral("Vidéo introuvable. Rouvrez-la via « Ouvrir une vidéo »."));
    EXPECT_EQ(state->videoURL(), sampleFilm());
    EXPECT_FALSE(state->player()->picture().isNull());
    EXPECT_EQ(state->groups().front().name, QStringLiteral("Ailleurs"));
    EXPECT_EQ(state->allFrames().front().notes, QStringLiteral("note"));
    EXPECT_EQ(state->unfinishedFrames(), 0);
    EXPECT_EQ(state->projectURL(), project());
    captureAt(*state, 1000);
    EXPECT_EQ(state->groups().front().frames.size(), 2) << "captures go to the opened groups";
}

TEST_F(AppStateProjectTest, WhereTheFolderIsGoneTheChosenOneStays) {
    state->setOutputFolder(QUrl::fromLocalFile(m_folder.path()));
    ProjectFile content = file();
    content.outputFolderBookmark = ProjectStore::makeBookmark(at(QStringLiteral("nulle part")));
    openFile(content);
    EXPECT_EQ(state->outputFolder(), QUrl::fromLocalFile(m_folder.path()));
    EXPECT_EQ(state->errorMessage(), std::nullopt);
}

TEST_F(AppStateProjectTest, AFileThatIsNoProjectChangesNothing) {
    load(*state);
    const QUuid id = captureAt(*state, 500);
    QFile broken(project().toLocalFile());
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("{\"version\": 1");
    broken.close();
    state->openProject(project());
    ASSERT_TRUE(state->errorMessage().has_value());
    EXPECT_TRUE(state->errorMessage()->startsWith(QStringLiteral("Échec de l'ouverture : ")));
    EXPECT_EQ(state->allFrames().front().id(), id);
    EXPECT_TRUE(state->projectURL().isEmpty());
    state->openProject(at(QStringLiteral("absent.stillwick")));
    EXPECT_TRUE(state->errorMessage()->startsWith(QStringLiteral("Échec de l'ouverture : ")));
}

TEST_F(AppStateProjectTest, AFailedSaveLeavesTheProjectsPlace) {
    state->saveProject(project());
    state->saveProject(at(QStringLiteral("absent/projet.stillwick")));
    ASSERT_TRUE(state->errorMessage().has_value());
    EXPECT_TRUE(state->errorMessage()->startsWith(QStringLiteral("Échec de l'enregistrement : ")));
    EXPECT_EQ(state->projectURL(), project());
}

TEST_F(AppStateProjectTest, WithoutAVideoAProjectIsSavedAndOpensWithTheMessage) {
    state->setGroupName(QStringLiteral("Idées"), state->activeGroupID());
    state->saveProject(project());
    const auto opened = newState();
    opened->openProject(project());
    EXPECT_EQ(opened->errorMessage(), AppState::videoMissingMessage);
    EXPECT_EQ(opened->groups().front().name, QStringLiteral("Idées"));
    EXPECT_FALSE(opened->hasVideo());
}

TEST_F(AppStateProjectTest, AnotherVideoForgetsTheProject) {
    load(*state);
    state->saveProject(project());
    load(*state);
    EXPECT_TRUE(state->projectURL().isEmpty());
}

TEST_F(AppStateProjectTest, HostileTimesAndNamesOpenAndFailOneByOne) {
    ProjectFile content = file();
    content.groups = {groupNamed(QStringLiteral("../..")), groupNamed(QString(10'000, u'x')),
                      groupNamed(QString(QChar(0)) + QStringLiteral("\n\u202Egpj"))};
    constexpr auto least = std::numeric_limits<qint64>::min();
    constexpr auto most = std::numeric_limits<qint64>::max();
    for (const auto& [value, scale] : std::initializer_list<std::pair<qint64, qint32>>{
             {1, 0}, {1, -30}, {least, 1}, {most, 1}, {least, -1}, {most, 2'147'483'647}, {0, 0}})
        content.groups.front().frames.append({value, scale, {}, {}});
    content.groups.front().frames.append({1, 2, {}, {}});
    openFile(content);
    ASSERT_EQ(state->frameCount(), 8);
    finish(*state);
    EXPECT_FALSE(state->allFrames().back().subjectPreview.isNull());
    state->setOutputFolder(at(QStringLiteral("a/b/sortie")));
    state->runExport(ExportMode::merged);
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    EXPECT_EQ(state->progress().completed, 8);
    // Nothing beside the project and the folder, and nothing between them.
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              (QStringList{QStringLiteral("a"), QStringLiteral("séance.stillwick")}));
    EXPECT_EQ(QDir(m_folder.filePath(QStringLiteral("a")))
                  .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("b")});
    EXPECT_EQ(QDir(m_folder.filePath(QStringLiteral("a/b")))
                  .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("sortie")});
}

TEST_F(AppStateProjectTest, MarksAndEdgesBeyondAllMeasureAreExportedAllTheSame) {
    ProjectFile content = file();
    constexpr double huge = 1e300;
    content.edge = {huge, huge, false, huge, huge, -huge, huge, huge};
    content.groups = {groupNamed(QStringLiteral("Captures"))};
    QList<Annotation> marks;
    for (const AnnotationKind kind :
         {AnnotationKind::arrow, AnnotationKind::line, AnnotationKind::circle}) {
        for (const auto& [from, to, width] : std::initializer_list<std::array<double, 3>>{
                 {-huge, huge, huge}, {0.5, huge, 0.01}, {-1e9, 1e9, 1e9}, {1e15, 1e15, -1}}) {
            Annotation mark = circle();
            mark.kind = kind;
            mark.start = {from, 0.5};
            mark.end = {to, from};
            mark.lineWidth = width;
            mark.r = huge;
            marks.append(mark);
        }
    }
    content.groups.front().frames.append({1, 2, {}, marks});
    openFile(content);
    state->setOutputFolder(at(QStringLiteral("sortie")));
    state->runExport(ExportMode::merged);
    constexpr std::chrono::seconds underSanitizers(400);
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }, underSanitizers));
    EXPECT_EQ(state->progress().completed, 1);
    EXPECT_TRUE(state->failures().isEmpty());
}

} // namespace

} // namespace stillwick::testing
