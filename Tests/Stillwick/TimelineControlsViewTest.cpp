// The timeline and its buttons.
#include "SampleState.h"

#include "Interface/ContinuousSlider.h"
#include "Interface/Labels.h"
#include "Stillwick/TimelineControlsView.h"

#include <gtest/gtest.h>

#include <QAbstractButton>

namespace stillwick::testing {

namespace {

class TimelineControlsViewTest : public ::testing::Test {
protected:
    [[nodiscard]] QAbstractButton& button(const char* help) const {
        for (auto* each : view.findChildren<QAbstractButton*>())
            if (each->toolTip() == QString::fromUtf8(help))
                return *each;
        throw std::runtime_error(help);
    }
    [[nodiscard]] QStringList times() const {
        QStringList texts;
        for (const auto* label : view.findChildren<FixedDigitLabel*>())
            texts.append(label->text());
        return texts;
    }

    std::unique_ptr<AppState> state = stateWith(blindSegmenter());
    TimelineControlsView view{*state};
    ContinuousSlider& slider = *view.findChild<ContinuousSlider*>();
};

TEST_F(TimelineControlsViewTest, WithoutAVideoTheSliderHasARangeAndBothTimesAreZero) {
    EXPECT_EQ(slider.least(), 0);
    EXPECT_EQ(slider.greatest(), 0.01);
    EXPECT_EQ(times(), (QStringList{QStringLiteral("00:00.000"), QStringLiteral("00:00.000")}));
}

TEST_F(TimelineControlsViewTest, NothingIsDisabledWithoutAVideoAndNothingHappens) {
    for (auto* each : view.findChildren<QAbstractButton*>()) {
        EXPECT_TRUE(each->isEnabled());
        each->click();
    }
    EXPECT_EQ(state->errorMessage(), QStringLiteral("Aucune vidéo chargée.")) << "the capture";
}

TEST_F(TimelineControlsViewTest, ItShowsTheFilmAndFollowsIt) {
    load(*state);
    EXPECT_EQ(slider.greatest(), 4);
    EXPECT_EQ(times()[1], QStringLiteral("00:04.000"));
    button("Avancer d'un intervalle (⇧→)").click();
    ASSERT_TRUE(runUntil([this] { return state->currentTime() == CMTime::make(1, 1); }));
    EXPECT_EQ(times()[0], QStringLiteral("00:01.000"));
    EXPECT_NEAR(slider.realValue(), 1, 1e-9);
    button("Image suivante (→)").click();
    ASSERT_TRUE(runUntil([this] { return state->currentTime() > CMTime::make(1, 1); }));
    EXPECT_EQ(times()[0], QStringLiteral("00:01.033"));
}

TEST_F(TimelineControlsViewTest, MovingTheSliderSeeksInSixHundredths) {
    load(*state);
    slider.chooseRealValue(1.23456);
    ASSERT_TRUE(runUntil([this] { return state->currentTime() > CMTime::zero(); }));
    // 740.736 of 600.
    EXPECT_EQ(state->currentTime(), CMTime::make(741, 600));
}

TEST_F(TimelineControlsViewTest, TheButtonsWork) {
    load(*state);
    button("Lecture / Pause (Espace)").click();
    ASSERT_TRUE(runUntil([this] { return state->isPlaying(); }));
    button("Lecture / Pause (Espace)").click();
    ASSERT_TRUE(runUntil([this] { return !state->isPlaying(); }));
    button("Ajouter l'image courante à la liste (C)").click();
    EXPECT_EQ(state->frameCount(), 1);
}

} // namespace

} // namespace stillwick::testing
