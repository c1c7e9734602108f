#include "Interface/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>

namespace {

using namespace stillwick;

class EveryScheme : public ::testing::TestWithParam<ColorScheme> {};

INSTANTIATE_TEST_SUITE_P(Theme, EveryScheme,
                         ::testing::Values(ColorScheme::light, ColorScheme::dark));

TEST(Theme, ContrastOfBlackAndWhiteIsTwentyOne) {
    EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 1e-6);
    EXPECT_NEAR(contrastRatio(Qt::white, Qt::black), 21, 1e-6);
}

TEST(Theme, ContrastOfMiddleGreyOnWhiteIsAsTheGuidelinesCount) {
    // 118/255 is 0.18116 of full light, linearly: 1.05 / 0.23116.
    EXPECT_NEAR(contrastRatio(QColor(118, 118, 118), Qt::white), 4.54, 0.005);
}

TEST_P(EveryScheme, TextIsReadableOnEveryGround) {
    for (const auto ground :
         {ThemeColor::window, ThemeColor::controlBackground, ThemeColor::fieldBackground,
          ThemeColor::control, ThemeColor::controlHover, ThemeColor::controlPressed,
          ThemeColor::selectionTint, ThemeColor::separator}) {
        EXPECT_GE(
            contrastRatio(themeColor(ThemeColor::text, GetParam()), themeColor(ground, GetParam())),
            4.5)
            << int(ground);
    }
}

TEST_P(EveryScheme, QuietTextIsReadableWhereItStands) {
    for (const auto text : {ThemeColor::secondaryText, ThemeColor::accent, ThemeColor::destructive,
                            ThemeColor::warning}) {
        for (const auto ground : {ThemeColor::window, ThemeColor::controlBackground,
                                  ThemeColor::fieldBackground, ThemeColor::selectionTint}) {
            EXPECT_GE(contrastRatio(themeColor(text, GetParam()), themeColor(ground, GetParam())),
                      4.5)
                << int(text) << " on " << int(ground);
        }
    }
}

TEST_P(EveryScheme, TextOnTheAccentIsReadableInEveryState) {
    for (const auto ground :
         {ThemeColor::accentFill, ThemeColor::accentHover, ThemeColor::accentPressed}) {
        EXPECT_GE(contrastRatio(themeColor(ThemeColor::onAccent, GetParam()),
                                themeColor(ground, GetParam())),
                  4.5)
            << int(ground);
    }
}

TEST_P(EveryScheme, TheFocusFrameStandsOut) {
    for (const auto ground :
         {ThemeColor::window, ThemeColor::fieldBackground, ThemeColor::control}) {
        EXPECT_GE(contrastRatio(themeColor(ThemeColor::accent, GetParam()),
                                themeColor(ground, GetParam())),
                  3)
            << int(ground);
    }
}

TEST_P(EveryScheme, ThePaletteTellsItsScheme) {
    EXPECT_EQ(schemeOf(themePalette(GetParam())), GetParam());
}

TEST_P(EveryScheme, WhatIsDisabledIsFainterThanWhatIsNot) {
    const QPalette palette = themePalette(GetParam());
    const QColor ground = palette.color(QPalette::Window);
    EXPECT_LT(contrastRatio(palette.color(QPalette::Disabled, QPalette::WindowText), ground),
              contrastRatio(palette.color(QPalette::Active, QPalette::WindowText), ground));
}

} // namespace
