// The list of captures and the heads of its groups.
#include "GateSegmenter.h"
#include "SampleState.h"

#include "Interface/SectionedListView.h"
#include "Stillwick/CapturedFramesListView.h"
#include "Stillwick/GroupHeaderView.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QStackedWidget>
#include <QTest>

namespace stillwick::testing {

namespace {

using Content = ThumbnailBox::Content;

class CapturedFramesListViewTest : public ::testing::Test {
protected:
    CapturedFramesListViewTest() {
        view.resize(320, 500);
        view.show();
        load(*state);
    }

    [[nodiscard]] GroupHeaderView& header(qsizetype group) const {
        return *qobject_cast<GroupHeaderView*>(view.list().headerOf(state->groups()[group].id()));
    }
    /// Buttons of a header by their help text.
    [[nodiscard]] QAbstractButton* button(qsizetype group, const char* help) const {
        for (auto* each : header(group).findChildren<QAbstractButton*>())
            if (each->toolTip() == QString::fromUtf8(help) && each->isVisibleTo(&header(group)))
                return each;
        return nullptr;
    }
    [[nodiscard]] bool isEmptyPanelShown() const {
        return view.findChild<QStackedWidget*>()->currentIndex() == 0;
    }

    std::shared_ptr<GateSegmenter> gate = std::make_shared<GateSegmenter>();
    std::unique_ptr<AppState> state = stateWith(gate);
    CapturedFramesListView view{*state};
};

TEST_F(CapturedFramesListViewTest, WithoutCapturesThePanelShowsAndAgainAfterTheLastIsDeleted) {
    EXPECT_TRUE(isEmptyPanelShown());
    const QUuid id = captureAt(*state, 0);
    EXPECT_FALSE(isEmptyPanelShown());
    state->deleteFrame(id);
    EXPECT_TRUE(isEmptyPanelShown());
}

TEST_F(CapturedFramesListViewTest, ARowShowsWhatBecomesOfItsCapture) {
    const QUuid id = captureAt(*state, 1250);
    EXPECT_EQ(view.rowFor(id).text, QStringLiteral("00:01.250"));
    EXPECT_EQ(view.rowFor(id).boxes[0].content, Content::progress);
    EXPECT_EQ(view.rowFor(id).boxes[1].content, Content::progress);
    ASSERT_TRUE(runUntil([&] { return !frameIn(*state, id).thumbnail.isNull(); }));
    EXPECT_EQ(view.rowFor(id).boxes[0].content, Content::picture);
    EXPECT_EQ(view.rowFor(id).boxes[1].content, Content::progress);
    gate->open(1);
    finish(*state);
    EXPECT_EQ(view.rowFor(id).boxes[1].content, Content::picture);
    EXPECT_TRUE(view.rowFor(id).boxes[1].isOnCheckerboard);
    EXPECT_LE(view.rowFor(id).boxes[1].picture.width(), 192) << "not the whole picture";
}

TEST_F(CapturedFramesListViewTest, ACaptureWithoutASubjectShowsSo) {
    const auto blind = stateWith(blindSegmenter());
    load(*blind);
    const CapturedFramesListView list(*blind);
    const QUuid id = captureAt(*blind, 0);
    finish(*blind);
    EXPECT_EQ(list.rowFor(id).boxes[1].content, Content::symbol);
    EXPECT_EQ(list.rowFor(id).boxes[1].symbol, QStringLiteral("person.slash"));
}

TEST_F(CapturedFramesListViewTest, GroupsCanBeDeletedFromTheSecondOn) {
    captureAt(*state, 0);
    EXPECT_EQ(button(0, "Supprimer le groupe"), nullptr);
    state->addGroup();
    EXPECT_NE(button(0, "Supprimer le groupe"), nullptr);
    ASSERT_NE(button(1, "Supprimer le groupe"), nullptr);
    button(1, "Supprimer le groupe")->click();
    ASSERT_TRUE(runUntil([this] { return state->groups().size() == 1; }));
    EXPECT_EQ(button(0, "Supprimer le groupe"), nullptr);
}

TEST_F(CapturedFramesListViewTest, AHeaderActivatesItsGroup) {
    captureAt(*state, 0);
    state->addGroup();
    EXPECT_NE(button(1, "Groupe actif (cible des captures)"), nullptr);
    ASSERT_NE(button(0, "Définir comme groupe actif"), nullptr);
    button(0, "Définir comme groupe actif")->click();
    EXPECT_EQ(state->activeGroupIndex(), 0);
    EXPECT_NE(button(0, "Groupe actif (cible des captures)"), nullptr);
}

TEST_F(CapturedFramesListViewTest, TypingANameChangesTheGroupAtOnce) {
    captureAt(*state, 0);
    auto& name = *header(0).findChild<QLineEdit*>();
    name.setFocus();
    name.selectAll();
    QTest::keyClicks(&name, QStringLiteral("Saut en c"));
    EXPECT_EQ(state->groups().front().name, QStringLiteral("Saut en c"));
    EXPECT_EQ(state->frameCount(), 1) << "C is typed, not pressed";
    name.selectAll();
    QTest::keyClick(&name, Qt::Key_Delete);
    EXPECT_EQ(state->groups().front().name, QString());
    EXPECT_EQ(name.placeholderText(), QStringLiteral("Nom du groupe"));
}

TEST_F(CapturedFramesListViewTest, ANameThatAScreenReaderSetsIsTheGroups) {
    captureAt(*state, 0);
    auto* const name = header(0).findChild<QLineEdit*>();
    QAccessible::queryAccessibleInterface(name)->editableTextInterface()->replaceText(
        0, int(name->text().size()), QStringLiteral("Plan B"));
    EXPECT_EQ(state->groups().front().name, QStringLiteral("Plan B"));
}

TEST_F(CapturedFramesListViewTest, ANameTooLongForTheFieldStaysWhole) {
    captureAt(*state, 0);
    const QString name(40'000, u'm'); // fields hold 32767
    state->setGroupName(name, state->groups().front().id());
    EXPECT_EQ(state->groups().front().name, name);
}

TEST_F(CapturedFramesListViewTest, TheDescriptionChangesTheGroupAtOnce) {
    captureAt(*state, 0);
    auto& notes = *header(0).findChild<QPlainTextEdit*>();
    notes.setPlainText(QStringLiteral("Vue de face"));
    EXPECT_EQ(state->groups().front().notes, QStringLiteral("Vue de face"));
}

TEST_F(CapturedFramesListViewTest, TheMenuOffersEveryOtherGroup) {
    const QUuid id = captureAt(*state, 0);
    QMenu alone;
    view.fillMenu(id, &alone);
    ASSERT_EQ(alone.actions().size(), 2);
    EXPECT_EQ(alone.actions()[0]->text(), QStringLiteral("Déplacer vers"));
    EXPECT_TRUE(alone.actions()[0]->menu()->isEmpty());
    state->addGroup();
    state->addGroup();
    state->setGroupName(QString(), state->groups()[1].id());
    state->setGroupName(QStringLiteral("A & B"), state->groups()[2].id());
    QMenu menu;
    view.fillMenu(id, &menu);
    const QList<QAction*> moves = menu.actions()[0]->menu()->actions();
    ASSERT_EQ(moves.size(), 2);
    EXPECT_EQ(moves[0]->text(), QStringLiteral("Sans nom"));
    EXPECT_EQ(moves[1]->text(), QStringLiteral("A && B"));
    moves[1]->trigger();
    EXPECT_EQ(state->groups()[2].frames.size(), 1);
    EXPECT_EQ(menu.actions()[1]->text(), QStringLiteral("Supprimer"));
    menu.actions()[1]->trigger();
    EXPECT_EQ(state->frameCount(), 0);
}

TEST_F(CapturedFramesListViewTest, SelectionGoesBothWays) {
    const QUuid first = captureAt(*state, 0);
    const QUuid second = captureAt(*state, 500);
    EXPECT_EQ(view.list().selectedRows(), QSet{second});
    state->setSelection({first});
    EXPECT_EQ(view.list().selectedRows(), QSet{first});
    emit view.list().selectionChosen({first, second});
    EXPECT_EQ(state->selection(), (QSet{first, second}));
}

TEST_F(CapturedFramesListViewTest, AMoveInTheListMovesTheCaptures) {
    const QUuid first = captureAt(*state, 0);
    captureAt(*state, 500);
    emit view.list().moveRequested(state->groups().front().id(), {0}, 2);
    EXPECT_EQ(state->groups().front().frames.back().id(), first);
    EXPECT_EQ(view.list().sections().front().rows.back(), first);
}

} // namespace

} // namespace stillwick::testing
