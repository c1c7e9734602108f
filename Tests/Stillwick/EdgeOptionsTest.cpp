#include "Stillwick/EdgeOptions.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace stillwick {
namespace {

TEST(EdgeOptionsTest, AFreshSettingDoesNothingAndHasAWhiteOutlineOfSixInStore) {
    const EdgeOptions options;
    EXPECT_EQ(options.shrink, 0);
    EXPECT_EQ(options.feather, 0);
    EXPECT_FALSE(options.outline);
    EXPECT_EQ(options.outlineWidth, 6);
    EXPECT_EQ(options.outlineColor, QColor(Qt::white));
    EXPECT_TRUE(options.isIdentity());
}

TEST(EdgeOptionsTest, AnythingAboveZeroOrAnOutlineIsSomethingToDo) {
    EXPECT_FALSE((EdgeOptions{.shrink = 0.1}.isIdentity()));
    EXPECT_FALSE((EdgeOptions{.feather = 0.1}.isIdentity()));
    EXPECT_FALSE((EdgeOptions{.outline = true}.isIdentity()));
    EXPECT_TRUE((EdgeOptions{.shrink = -1, .feather = -2, .outlineWidth = 20}.isIdentity()));
}

TEST(EdgeOptionsTest, TheSignatureOfFreshSettings) {
    EXPECT_EQ(EdgeOptions().signature(), "0.0-0.0-0-6.0-1.00,1.00,1.00,1.00");
}

TEST(EdgeOptionsTest, TheSignatureHoldsEverySettingRounded) {
    const EdgeOptions options{1.25, 2.06, true, 12.5, QColor::fromRgbF(0.5F, 0.25F, 0.126F, 0.1F)};
    EXPECT_EQ(options.signature(), "1.2-2.1-1-12.5-0.50,0.25,0.13,0.10");
}

TEST(EdgeOptionsTest, TheSignatureDoesNotFollowTheLocale) {
    QLocale::setDefault(QLocale(QLocale::French));
    EXPECT_EQ((EdgeOptions{.shrink = 0.5}.signature()), "0.5-0.0-0-6.0-1.00,1.00,1.00,1.00");
    QLocale::setDefault(QLocale::c());
}

TEST(EdgeOptionsTest, ParamsAreTheSettingsInPlainNumbers) {
    const EdgeParams params = EdgeOptions{1, 2, true, 3, QColor(255, 0, 51, 102)}.params();
    EXPECT_EQ(params.shrink, 1);
    EXPECT_EQ(params.feather, 2);
    EXPECT_TRUE(params.outline);
    EXPECT_EQ(params.outlineWidth, 3);
    // QColor holds 16 bits a component.
    EXPECT_NEAR(params.r, 1, 1e-5);
    EXPECT_NEAR(params.g, 0, 1e-5);
    EXPECT_NEAR(params.b, 0.2, 1e-5);
    EXPECT_NEAR(params.a, 0.4, 1e-5);
}

TEST(EdgeOptionsTest, AColourOfAnotherModelIsConverted) {
    const ColorComponents green = EdgeOptions::components(QColor::fromHsvF(1.0F / 3, 1, 1, 0.5F));
    EXPECT_NEAR(green.r, 0, 1e-4);
    EXPECT_NEAR(green.g, 1, 1e-4);
    EXPECT_NEAR(green.b, 0, 1e-4);
    EXPECT_NEAR(green.a, 0.5, 1e-4);
    const ColorComponents cyan = EdgeOptions::components(QColor::fromCmykF(1, 0, 0, 0));
    EXPECT_NEAR(cyan.r, 0, 1e-4);
    EXPECT_NEAR(cyan.g, 1, 1e-4);
}

TEST(EdgeOptionsTest, NoColourCountsAsOpaqueWhite) {
    EXPECT_EQ(EdgeOptions::components(QColor()), (ColorComponents{1, 1, 1, 1}));
}

TEST(EdgeParamsTest, IdentityCleansNothingAndOutlinesNothing) {
    const EdgeParams identity = EdgeParams::identity();
    EXPECT_EQ(identity, (EdgeParams{0, 0, false, 0, 1, 1, 1, 1}));
    EXPECT_FALSE(identity.needsClean());
}

TEST(EdgeParamsTest, OnlyWhatIsAboveZeroNeedsCleaning) {
    EXPECT_TRUE((EdgeParams{.shrink = 0.1}.needsClean()));
    EXPECT_TRUE((EdgeParams{.feather = 0.1}.needsClean()));
    EXPECT_FALSE((EdgeParams{.shrink = -1, .feather = -1}.needsClean()));
    EXPECT_FALSE((EdgeParams{.outline = true, .outlineWidth = 6}.needsClean()));
}

} // namespace
} // namespace stillwick
