// Captures and groups of the working state, without waiting for their pictures.
#include "SampleState.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace stillwick::testing {

namespace {

class AppStateCapturesTest : public ::testing::Test {
protected:
    QList<QUuid> idsIn(qsizetype group) const {
        QList<QUuid> ids;
        for (const CapturedFrame& frame : state->groups()[group].frames)
            ids.append(frame.id());
        return ids;
    }

    std::unique_ptr<AppState> state = stateWith(blindSegmenter());
};

TEST_F(AppStateCapturesTest, ACaptureWithoutAVideoIsRefusedAndChangesNothingElse) {
    QSignalSpy groups(state.get(), &AppState::groupsChanged);
    state->captureCurrentFrame();
    EXPECT_EQ(state->errorMessage(), QStringLiteral("Aucune vidéo chargée."));
    EXPECT_EQ(state->frameCount(), 0);
    EXPECT_TRUE(state->selection().isEmpty());
    EXPECT_TRUE(groups.isEmpty());
}

TEST_F(AppStateCapturesTest, ACaptureGoesToTheEndOfTheActiveGroupAndIsSelected) {
    load(*state);
    const QUuid first = captureAt(*state, 0);
    const QUuid second = captureAt(*state, 400);
    state->addGroup();
    const QUuid third = captureAt(*state, 800);
    EXPECT_EQ(idsIn(0), (QList{first, second}));
    EXPECT_EQ(idsIn(1), QList{third});
    EXPECT_EQ(state->selection(), QSet{third});
    EXPECT_EQ(frameIn(*state, second).time(), CMTime::make(400, 1000));
    EXPECT_FALSE(frameIn(*state, third).subjectExtracted);
    EXPECT_TRUE(frameIn(*state, third).notes.isEmpty());
    EXPECT_TRUE(frameIn(*state, third).annotations.isEmpty());
}

TEST_F(AppStateCapturesTest, ACaptureTakesThePlayersTimeOfThatMoment) {
    load(*state);
    state->togglePlayPause();
    ASSERT_TRUE(runUntil([this] { return state->player()->currentTime() > CMTime::zero(); }));
    for (int i = 0; i < 20; ++i) {
        runFor(std::chrono::milliseconds(7));
        const CMTime shown = state->player()->currentTime();
        state->captureCurrentFrame();
        EXPECT_EQ(state->allFrames().back().time(), shown);
    }
    EXPECT_GT(state->allFrames().back().time(), CMTime::zero());
}

TEST_F(AppStateCapturesTest, ACaptureWhileTheActiveGroupIsUnknownGoesToTheFirst) {
    load(*state);
    state->addGroup();
    state->setActiveGroup(QUuid::createUuid());
    EXPECT_EQ(state->activeGroupIndex(), 0);
    const QUuid id = captureAt(*state, 0);
    EXPECT_EQ(idsIn(0), QList{id});
}

TEST_F(AppStateCapturesTest, TwoCapturesOfOnePictureAreTwoWithEqualTimes) {
    load(*state);
    const QUuid first = captureAt(*state, 500);
    const QUuid second = captureAt(*state, 500);
    EXPECT_NE(first, second);
    EXPECT_EQ(frameIn(*state, first).time(), frameIn(*state, second).time());
    EXPECT_EQ(state->frameCount(), 2);
}

TEST_F(AppStateCapturesTest, NotesAndMarksAreSetWhereverTheCaptureIs) {
    load(*state);
    const QUuid id = captureAt(*state, 0);
    state->addGroup();
    state->moveFrame(id, state->activeGroupID());
    QSignalSpy changed(state.get(), &AppState::frameChanged);
    state->setNote(QStringLiteral("Appui"), id);
    state->setAnnotations({Annotation()}, id);
    EXPECT_EQ(frameIn(*state, id).notes, QStringLiteral("Appui"));
    EXPECT_EQ(frameIn(*state, id).annotations.size(), 1);
    EXPECT_EQ(changed.size(), 2);
    state->setNote(QStringLiteral("ailleurs"), QUuid::createUuid());
    EXPECT_EQ(changed.size(), 2) << "an unknown id changes nothing";
}

TEST_F(AppStateCapturesTest, ADeletedCaptureLeavesTheGroupsAndTheSelection) {
    load(*state);
    const QUuid first = captureAt(*state, 0);
    const QUuid second = captureAt(*state, 400);
    const QUuid active = state->activeGroupID();
    state->setSelection({first, second});
    state->deleteFrame(first);
    EXPECT_EQ(idsIn(0), QList{second});
    EXPECT_EQ(state->selection(), QSet{second});
    EXPECT_EQ(state->activeGroupID(), active);
    state->deleteFrame(QUuid::createUuid());
    EXPECT_EQ(state->frameCount(), 1);
}

TEST_F(AppStateCapturesTest, MovedCapturesKeepTheirOrderAndLandInFrontOfTheTarget) {
    load(*state);
    QList<QUuid> ids;
    for (int i = 0; i < 5; ++i)
        ids.append(captureAt(*state, i * 100));
    const QUuid group = state->activeGroupID();
    const auto order = [&ids](std::initializer_list<int> positions) {
        QList<QUuid> result;
        for (const int position : positions)
            result.append(ids[position]);
        return result;
    };
    state->moveFrames(group, {0, 2}, 4);
    EXPECT_EQ(idsIn(0), order({1, 3, 0, 2, 4}));
    ids = idsIn(0);
    state->moveFrames(group, {0}, 5);
    EXPECT_EQ(idsIn(0), order({1, 2, 3, 4, 0})) << "to the end";
    ids = idsIn(0);
    state->moveFrames(group, {3, 4}, 0);
    EXPECT_EQ(idsIn(0), order({3, 4, 0, 1, 2})) << "to the beginning";
    ids = idsIn(0);
    state->moveFrames(group, {1}, 1);
    state->moveFrames(group, {1}, 2);
    state->moveFrames(QUuid::createUuid(), {0}, 5);
    state->moveFrames(group, {17, -1}, 0);
    EXPECT_EQ(idsIn(0), ids) << "nowhere";
}

TEST_F(AppStateCapturesTest, MovingToAnotherGroupAppendsThere) {
    load(*state);
    const QUuid first = captureAt(*state, 0);
    const QUuid second = captureAt(*state, 100);
    const QUuid original = state->activeGroupID();
    state->addGroup();
    const QUuid third = captureAt(*state, 200);
    const QUuid target = state->activeGroupID();
    state->moveFrame(first, target);
    EXPECT_EQ(idsIn(0), QList{second});
    EXPECT_EQ(idsIn(1), (QList{third, first}));
    EXPECT_EQ(state->activeGroupID(), target);
    EXPECT_EQ(state->selection(), QSet{third});
    state->moveFrame(first, QUuid::createUuid());
    EXPECT_EQ(idsIn(1), (QList{third, first})) << "to no group";
    state->moveFrame(QUuid::createUuid(), original);
    EXPECT_EQ(idsIn(0), QList{second}) << "no capture";
}

TEST_F(AppStateCapturesTest, MovingToItsOwnGroupPutsACaptureLast) {
    load(*state);
    const QUuid first = captureAt(*state, 0);
    const QUuid second = captureAt(*state, 100);
    state->moveFrame(first, state->activeGroupID());
    EXPECT_EQ(idsIn(0), (QList{second, first}));
}

TEST_F(AppStateCapturesTest, TheLastGroupCannotBeDeleted) {
    const QUuid only = state->activeGroupID();
    state->deleteGroup(only);
    ASSERT_EQ(state->groups().size(), 1);
    EXPECT_EQ(state->activeGroupID(), only);
}

TEST_F(AppStateCapturesTest, DeletingTheActiveGroupOfTwoActivatesTheOtherAndDropsItsSelection) {
    load(*state);
    const QUuid kept = captureAt(*state, 0);
    state->addGroup();
    const QUuid dropped = captureAt(*state, 100);
    state->setSelection({kept, dropped});
    state->deleteGroup(state->activeGroupID());
    ASSERT_EQ(state->groups().size(), 1);
    EXPECT_EQ(state->activeGroupID(), state->groups().front().id());
    EXPECT_EQ(state->selection(), QSet{kept});
    EXPECT_EQ(state->frameCount(), 1);
}

TEST_F(AppStateCapturesTest, DeletingAnotherGroupLeavesTheActiveOne) {
    const QUuid first = state->activeGroupID();
    state->addGroup();
    const QUuid second = state->activeGroupID();
    state->deleteGroup(first);
    EXPECT_EQ(state->activeGroupID(), second);
    state->addGroup();
    state->deleteGroup(QUuid::createUuid());
    EXPECT_EQ(state->groups().size(), 2);
}

TEST_F(AppStateCapturesTest, NumbersOfGroupsAreCountedNotKept) {
    state->addGroup();
    state->addGroup();
    ASSERT_EQ(state->groups()[1].name, QStringLiteral("Groupe 2"));
    ASSERT_EQ(state->groups()[2].name, QStringLiteral("Groupe 3"));
    state->deleteGroup(state->groups()[1].id());
    state->addGroup();
    EXPECT_EQ(state->groups()[1].name, QStringLiteral("Groupe 3"));
    EXPECT_EQ(state->groups()[2].name, QStringLiteral("Groupe 3"));
    EXPECT_EQ(state->activeGroupID(), state->groups()[2].id());
}

TEST_F(AppStateCapturesTest, AGroupsNameAndNotesCanBeEdited) {
    QSignalSpy changed(state.get(), &AppState::groupChanged);
    const QUuid id = state->activeGroupID();
    state->setGroupName(QStringLiteral("Départ"), id);
    state->setGroupNotes(QStringLiteral("Premier essai"), id);
    state->setGroupName(QStringLiteral("Départ"), id);
    state->setGroupName(QStringLiteral("ailleurs"), QUuid::createUuid());
    EXPECT_EQ(state->groups().front().name, QStringLiteral("Départ"));
    EXPECT_EQ(state->groups().front().notes, QStringLiteral("Premier essai"));
    EXPECT_EQ(changed.size(), 2);
}

TEST_F(AppStateCapturesTest, ThePreviewIsASelectedCaptureElseTheVeryLast) {
    EXPECT_EQ(state->previewFrame(), std::nullopt);
    load(*state);
    const QUuid first = captureAt(*state, 0);
    const QUuid last = captureAt(*state, 100);
    state->addGroup(); // an empty one behind
    EXPECT_EQ(state->previewFrame()->id(), last);
    state->setSelection({first});
    EXPECT_EQ(state->previewFrame()->id(), first);
    state->setSelection({});
    EXPECT_EQ(state->previewFrame()->id(), last);
    state->setSelection({QUuid::createUuid()});
    EXPECT_EQ(state->previewFrame()->id(), last) << "a selected id that is gone";
    state->setSelection({first, last});
    const QUuid either = state->previewFrame()->id();
    EXPECT_TRUE(either == first || either == last);
}

TEST_F(AppStateCapturesTest, AllCapturesComeGroupByGroup) {
    load(*state);
    const QUuid first = captureAt(*state, 0);
    state->addGroup();
    const QUuid second = captureAt(*state, 100);
    state->setActiveGroup(state->groups().front().id());
    const QUuid third = captureAt(*state, 200);
    QList<QUuid> ids;
    for (const CapturedFrame& frame : state->allFrames())
        ids.append(frame.id());
    EXPECT_EQ(ids, (QList{first, third, second}));
}

TEST_F(AppStateCapturesTest, SettingsAreToldOnceForEachChange) {
    QSignalSpy filter(state.get(), &AppState::selectedFilterChanged);
    QSignalSpy edge(state.get(), &AppState::edgeOptionsChanged);
    state->setSelectedFilter(FilterStyle::comic);
    state->setSelectedFilter(FilterStyle::comic);
    EdgeOptions options;
    options.shrink = 2;
    state->setEdgeOptions(options);
    state->setEdgeOptions(options);
    EXPECT_EQ(filter.size(), 1);
    EXPECT_EQ(edge.size(), 1);
    EXPECT_EQ(state->edgeOptions(), options);
}

} // namespace

} // namespace stillwick::testing
