// Exports that a working state starts, with a real film and real folders.
#include "GateSegmenter.h"
#include "SampleState.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QSignalSpy>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;

class AppStateExportTest : public ::testing::Test {
protected:
    void SetUp() override { load(*state); }

    void chooseFolder() { state->setOutputFolder(QUrl::fromLocalFile(output())); }
    [[nodiscard]] QString output() const { return m_folder.filePath(QStringLiteral("sortie")); }

    /// Instead of the state: one of two captures whose subjects wait at the gate that is returned,
    /// each time that they are looked for.
    std::shared_ptr<GateSegmenter> captureTwoAndBegin() {
        auto gate = std::make_shared<GateSegmenter>();
        state = stateWith(gate);
        load(*state);
        chooseFolder();
        captureAt(*state, 1000);
        captureAt(*state, 500);
        gate->open(2);
        finish(*state);
        state->runExport(ExportMode::merged);
        return gate;
    }

    void exportAll(ExportMode mode = ExportMode::merged) {
        state->runExport(mode);
        ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    }

    /// Files below the output folder, as relative paths, sorted.
    [[nodiscard]] QStringList files() const {
        QStringList paths;
        QDirIterator each(output(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (each.hasNext())
            paths.append(QDir(output()).relativeFilePath(each.next()));
        paths.sort();
        return paths;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<AppState> state =
        stateWith(std::make_shared<ColumnSegmenter>(std::vector{90, 60}));
};

TEST_F(AppStateExportTest, WithoutAVideoAnExportIsRefused) {
    state = stateWith(blindSegmenter());
    state->runExport(ExportMode::merged);
    EXPECT_EQ(state->errorMessage(), QStringLiteral("Aucune vidéo chargée."));
    EXPECT_EQ(state->progress(), ExportProgress::idle);
}

TEST_F(AppStateExportTest, WithoutAFolderAnExportIsRefused) {
    captureAt(*state, 0);
    state->runExport(ExportMode::merged);
    EXPECT_EQ(state->errorMessage(), QStringLiteral("Aucun dossier de sortie sélectionné."));
    EXPECT_EQ(state->progress(), ExportProgress::idle);
}

TEST_F(AppStateExportTest, WithoutCapturesNothingHappensAndNothingIsSaid) {
    chooseFolder();
    state->runExport(ExportMode::merged);
    EXPECT_EQ(state->errorMessage(), std::nullopt);
    EXPECT_EQ(state->progress(), ExportProgress::idle);
    EXPECT_FALSE(QDir(output()).exists());
}

TEST_F(AppStateExportTest, ASingleGroupGoesIntoTheFolderItself) {
    chooseFolder();
    captureAt(*state, 1000);
    captureAt(*state, 500);
    QSignalSpy progress(state.get(), &AppState::progressChanged);
    state->runExport(ExportMode::merged);
    EXPECT_EQ(state->progress(), (ExportProgress{0, 2, true}));
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    EXPECT_EQ(state->progress(), (ExportProgress{2, 2, false}));
    EXPECT_EQ(progress.size(), 4) << "begun, two captures, ended";
    EXPECT_EQ(files(), (QStringList{QStringLiteral("balles_00-00-00-500.png"),
                                    QStringLiteral("balles_00-00-01-000.png")}));
    EXPECT_EQ(state->exportFinishedFolder(), QUrl::fromLocalFile(output()));
    EXPECT_TRUE(state->failures().isEmpty());
}

TEST_F(AppStateExportTest, AnEmptySecondGroupSendsBothIntoFoldersOfTheirOwn) {
    chooseFolder();
    captureAt(*state, 1000);
    state->addGroup();
    exportAll();
    EXPECT_EQ(files(), (QStringList{QStringLiteral("Captures/Captures.md"),
                                    QStringLiteral("Captures/balles_00-00-01-000.png"),
                                    QStringLiteral("Groupe 2/Groupe 2.md")}));
}

TEST_F(AppStateExportTest, EachSubjectGetsAFileWhereThatIsAskedFor) {
    chooseFolder();
    state->setCropToSubject(true);
    captureAt(*state, 1000);
    exportAll(ExportMode::perSubject);
    ASSERT_EQ(files().size(), 2);
    EXPECT_EQ(QImage(output() + u'/' + files()[0]).width(), 90);
    EXPECT_EQ(QImage(output() + u'/' + files()[1]).width(), 60);
}

TEST_F(AppStateExportTest, AnExportIsMadeOfTheMomentItBegan) {
    chooseFolder();
    const QUuid id = captureAt(*state, 1000);
    finish(*state);
    state->runExport(ExportMode::merged);
    state->setNote(QStringLiteral("trop tard"), id);
    state->setSelectedFilter(FilterStyle::poster);
    state->deleteFrame(id);
    state->setOutputFolder(QUrl::fromLocalFile(m_folder.filePath(QStringLiteral("ailleurs"))));
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    EXPECT_EQ(files(), QStringList{QStringLiteral("balles_00-00-01-000.png")}) << "no index";
    EXPECT_EQ(state->exportFinishedFolder(), QUrl::fromLocalFile(output()));
}

TEST_F(AppStateExportTest, ASecondExportWhileOneRunsDoesNothing) {
    const auto gate = std::make_shared<GateSegmenter>();
    state = stateWith(gate);
    load(*state);
    chooseFolder();
    captureAt(*state, 1000);
    gate->open(1);
    finish(*state);
    state->runExport(ExportMode::merged);
    QSignalSpy failures(state.get(), &AppState::failuresChanged);
    state->runExport(ExportMode::perSubject);
    EXPECT_TRUE(failures.isEmpty()) << "failures are not cleared";
    EXPECT_EQ(state->errorMessage(), std::nullopt);
    gate->open(1);
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    runFor(20ms);
    EXPECT_EQ(files(), QStringList{QStringLiteral("balles_00-00-01-000.png")});
}

TEST_F(AppStateExportTest, EachFailureIsListedAndTheExportGoesOn) {
    state = stateWith(blindSegmenter());
    load(*state);
    chooseFolder();
    captureAt(*state, 1000);
    captureAt(*state, 500);
    exportAll();
    ASSERT_EQ(state->failures().size(), 2);
    EXPECT_EQ(state->failures()[0].timestamp, QStringLiteral("00:01.000"));
    EXPECT_EQ(state->failures()[1].timestamp, QStringLiteral("00:00.500"));
    EXPECT_EQ(state->failures()[1].message,
              QStringLiteral("Aucun sujet détecté dans cette image."));
    EXPECT_EQ(state->progress(), (ExportProgress{2, 2, false}));
    EXPECT_EQ(state->errorMessage(), std::nullopt) << "no alert";
    exportAll();
    EXPECT_EQ(state->failures().size(), 2) << "emptied at the start of the next";
}

TEST_F(AppStateExportTest, AFolderThatVanishesMeanwhileFailsTheRest) {
    const auto gate = captureTwoAndBegin();
    gate->open(1);
    ASSERT_TRUE(runUntil([this] { return state->progress().completed == 1; }));
    ASSERT_TRUE(QDir(output()).removeRecursively());
    gate->open(1);
    ASSERT_TRUE(runUntil([this] { return !state->progress().isRunning; }));
    EXPECT_EQ(state->progress(), (ExportProgress{2, 2, false}));
    ASSERT_EQ(state->failures().size(), 1);
    EXPECT_EQ(state->failures()[0].timestamp, QStringLiteral("00:00.500"));
    EXPECT_FALSE(QDir(output()).exists());
}

TEST_F(AppStateExportTest, AnExportGoesOnWhereItsStateCloses) {
    const auto gate = captureTwoAndBegin();
    state.reset();
    gate->open(2);
    EXPECT_TRUE(runUntil([this] { return files().size() == 2; }));
}

TEST_F(AppStateExportTest, TheFinishedFolderIsForgottenOnceOpened) {
    chooseFolder();
    captureAt(*state, 1000);
    exportAll();
    ASSERT_FALSE(state->exportFinishedFolder().isEmpty());
    state->openExportFolder();
    EXPECT_TRUE(state->exportFinishedFolder().isEmpty());
    // There is no desktop here that could show it.
    ASSERT_TRUE(runUntil([this] { return state->errorMessage().has_value(); }));
    EXPECT_EQ(*state->errorMessage(),
              QStringLiteral("Le dossier « %1 » n'a pas pu être affiché.").arg(output()));
    state->setErrorMessage({});
    state->openExportFolder();
    runFor(20ms);
    EXPECT_EQ(state->errorMessage(), std::nullopt) << "no folder, nothing to open";
}

TEST_F(AppStateExportTest, AnotherVideoForgetsTheFailures) {
    state = stateWith(blindSegmenter());
    load(*state);
    chooseFolder();
    captureAt(*state, 1000);
    exportAll();
    ASSERT_FALSE(state->failures().isEmpty());
    load(*state);
    EXPECT_TRUE(state->failures().isEmpty());
}

} // namespace

} // namespace stillwick::testing
