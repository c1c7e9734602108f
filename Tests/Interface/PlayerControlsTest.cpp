#include "Interface/PlayerControls.h"

#include "Interface/ContinuousSlider.h"
#include "Interface/Labels.h"

#include "Shown.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QSignalSpy>

namespace {

using namespace stillwick;
using namespace stillwick::testing;

class PlayerControlsTest : public ::testing::Test {
protected:
    PlayerControlsTest() {
        view->setMinimumSize(600, 300);
        controls->setDuration(60);
        other->setFocus();
        QTest::qWait(1);
    }

    /// Buttons: play, mute. Sliders: position, volume.
    [[nodiscard]] QPushButton* button(int index) const {
        return controls->findChildren<QPushButton*>().at(index);
    }
    [[nodiscard]] ContinuousSlider* slider(const QString& name) const {
        for (auto* found : controls->findChildren<ContinuousSlider*>()) {
            if (found->accessibleName() == name)
                return found;
        }
        return nullptr;
    }
    [[nodiscard]] bool becomes(double presence) const {
        return QTest::qWaitFor([&] { return controls->presence() == presence; }, 10'000);
    }

    void movePointer() {
        QTest::mouseMove(view, QPoint(10, 10)); // it may have been where it goes to
        QTest::mouseMove(view, QPoint(30, 30));
    }

    QWidget* view = new QWidget;
    QPushButton* other = new QPushButton(QStringLiteral("Autre"));
    ShownWindow window{{other, view}, QSize(640, 400)};
    PlayerControls* controls = new PlayerControls(view);
};

TEST_F(PlayerControlsTest, AreNotThereUntilThePointerMovesOverTheView) {
    EXPECT_EQ(controls->presence(), 0);
    movePointer();
    EXPECT_TRUE(becomes(1));
}

TEST_F(PlayerControlsTest, GoWhenThePointerRests) {
    movePointer();
    ASSERT_TRUE(becomes(1));
    EXPECT_TRUE(becomes(0));
}

TEST_F(PlayerControlsTest, GoWhenThePointerLeaves) {
    movePointer();
    ASSERT_TRUE(becomes(1));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(view, &leave);
    EXPECT_TRUE(becomes(0));
}

TEST_F(PlayerControlsTest, AppearAtFocusAndStayWhileTheyHaveIt) {
    QTest::keyClick(other, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), button(0))
        << QApplication::focusWidget()->metaObject()->className();
    ASSERT_TRUE(becomes(1));
    QTest::qWait(3200); // longer than a pointer's rest
    EXPECT_EQ(controls->presence(), 1);
}

TEST_F(PlayerControlsTest, AClickTellsAndLeavesTheFocusWhereItIs) {
    QSignalSpy asked(controls, &PlayerControls::playPauseRequested);
    QTest::mouseClick(button(0), Qt::LeftButton);
    EXPECT_EQ(asked.count(), 1);
    EXPECT_EQ(QApplication::focusWidget(), other);
}

TEST_F(PlayerControlsTest, ThePositionIsShownAndAskedForInSeconds) {
    controls->setPosition(30);
    EXPECT_EQ(slider(QStringLiteral("Position"))->realValue(), 30);
    EXPECT_EQ(controls->findChildren<FixedDigitLabel*>().at(0)->text(), u"00:30.000");
    EXPECT_EQ(controls->findChildren<FixedDigitLabel*>().at(1)->text(), u"01:00.000");
    QSignalSpy asked(controls, &PlayerControls::seekRequested);
    QTest::keyClick(slider(QStringLiteral("Position")), Qt::Key_End);
    ASSERT_EQ(asked.count(), 1);
    EXPECT_EQ(asked.at(0).at(0).toDouble(), 60);
    EXPECT_EQ(controls->findChildren<FixedDigitLabel*>().at(0)->text(), u"01:00.000");
}

TEST_F(PlayerControlsTest, WhatIsShownIsNotAskedFor) {
    QSignalSpy seeks(controls, &PlayerControls::seekRequested);
    QSignalSpy volumes(controls, &PlayerControls::volumeRequested);
    controls->setPosition(12);
    controls->setVolume(0.5);
    EXPECT_EQ(seeks.count() + volumes.count(), 0);
}

TEST_F(PlayerControlsTest, MuteAsksForTheOppositeAndShowsWhatItIsTold) {
    QSignalSpy asked(controls, &PlayerControls::muteRequested);
    QTest::mouseClick(button(1), Qt::LeftButton);
    ASSERT_EQ(asked.count(), 1);
    EXPECT_TRUE(asked.at(0).at(0).toBool());
    EXPECT_EQ(accessibleName(button(1)), u"Couper le son"); // nobody has muted it yet
    controls->setMuted(true);
    EXPECT_EQ(accessibleName(button(1)), u"Rétablir le son");
    EXPECT_FALSE(slider(QStringLiteral("Volume"))->isEnabled());
}

TEST_F(PlayerControlsTest, TheButtonIsNamedByWhatItWillDo) {
    EXPECT_EQ(accessibleName(button(0)), u"Lecture");
    controls->setPlaying(true);
    EXPECT_EQ(accessibleName(button(0)), u"Pause");
}

TEST_F(PlayerControlsTest, WithoutADurationThereIsStillARange) {
    controls->setDuration(0);
    EXPECT_EQ(slider(QStringLiteral("Position"))->greatest(), 0.01);
    EXPECT_EQ(controls->findChildren<FixedDigitLabel*>().at(1)->text(), u"00:00.000");
}

TEST_F(PlayerControlsTest, TheVolumeGivesWayInANarrowView) {
    EXPECT_TRUE(slider(QStringLiteral("Volume"))->isVisible());
    view->setMinimumSize(100, 100);
    QTest::qWait(1); // the window's least size follows
    window.resize(340, 400);
    EXPECT_TRUE(
        QTest::qWaitFor([this] { return !slider(QStringLiteral("Volume"))->isVisible(); }, 5000));
    EXPECT_TRUE(controls->geometry().left() >= 0 && controls->geometry().right() < view->width());
}

} // namespace
