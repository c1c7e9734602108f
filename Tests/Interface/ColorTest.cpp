// Choosing colours.
#include "Interface/Checkerboard.h"
#include "Interface/ColorPicker.h"
#include "Interface/ColorWell.h"
#include "Interface/Popover.h"

#include "Shown.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPainter>
#include <QSignalSpy>

namespace {

using namespace stillwick;
using namespace stillwick::testing;

TEST(ColorCode, OpacityIsWrittenOnlyWhereThereIsSome) {
    EXPECT_EQ(colorCode(QColor(255, 128, 0)), u"#FF8000");
    EXPECT_EQ(colorCode(QColor(255, 128, 0, 10)), u"#FF80000A");
}

TEST(ColorCode, EveryFormIsRead) {
    EXPECT_EQ(colorOfCode(QStringLiteral("#FF8000")), QColor(255, 128, 0));
    EXPECT_EQ(colorOfCode(QStringLiteral(" ff80000a ")), QColor(255, 128, 0, 10));
    EXPECT_EQ(colorOfCode(QStringLiteral("#f80")), QColor(255, 136, 0));
    EXPECT_EQ(colorOfCode(QStringLiteral("f808")), QColor(255, 136, 0, 136));
}

TEST(ColorCode, AnythingElseIsNoColour) {
    for (const char* code :
         {"", "#", "#ff", "#ff800", "#ff80000", "#gg8000", "rouge", "#ff8000000"})
        EXPECT_FALSE(colorOfCode(QString::fromUtf8(code)).isValid()) << code;
}

class ColorWellTest : public ::testing::Test {
protected:
    ColorWellTest() { well->setColor(QColor(255, 0, 0, 128)); }

    [[nodiscard]] ColorSwatch* swatch(const QString& name) const {
        for (auto* found : well->picker().findChildren<ColorSwatch*>()) {
            if (found->accessibleName() == name)
                return found;
        }
        return nullptr;
    }
    [[nodiscard]] ColorSlider* slider(const QString& name) const {
        for (auto* found : well->picker().findChildren<ColorSlider*>()) {
            if (found->accessibleName() == name)
                return found;
        }
        return nullptr;
    }

    ColorWell* well = new ColorWell(QStringLiteral("Couleur de l'annotation"));
    ShownWindow window{{well}, QSize(500, 600)};
    QSignalSpy chosen{well, &ColorWell::colorChosen};
};

TEST_F(ColorWellTest, ShowsItsColourOverTheBoard) {
    const QImage image = well->grab().toImage();
    const QColor middle = image.pixelColor(image.width() / 2, image.height() / 2);
    EXPECT_GT(middle.red(), 200);
    EXPECT_NEAR(middle.green(), 0x60, 30); // half of the 0xbf below
}

TEST_F(ColorWellTest, OpensItsPickerByMouseAndByKeyboard) {
    QTest::mouseClick(well, Qt::LeftButton);
    EXPECT_TRUE(well->popover().isOpen());
    well->popover().dismiss();
    QTest::keyClick(well, Qt::Key_Space);
    EXPECT_TRUE(well->popover().isOpen());
}

TEST_F(ColorWellTest, ASwatchKeepsTheOpacity) {
    well->popover().open();
    ASSERT_NE(swatch(QStringLiteral("Noir")), nullptr);
    QTest::mouseClick(swatch(QStringLiteral("Noir")), Qt::LeftButton);
    EXPECT_EQ(well->color(), QColor(0, 0, 0, 128));
    EXPECT_EQ(chosen.count(), 1);
}

TEST_F(ColorWellTest, TheOpacitySliderReachesBothEnds) {
    well->popover().open();
    QTest::keyClick(slider(QStringLiteral("Opacité")), Qt::Key_End);
    EXPECT_EQ(well->color(), QColor(255, 0, 0, 255));
    QTest::keyClick(slider(QStringLiteral("Opacité")), Qt::Key_Home);
    EXPECT_EQ(well->color(), QColor(255, 0, 0, 0));
}

TEST_F(ColorWellTest, AHueIsKeptThroughGrey) {
    well->setColor(QColor(0, 0, 255));
    well->popover().open();
    QTest::keyClick(slider(QStringLiteral("Saturation")), Qt::Key_Home);
    EXPECT_EQ(well->color(), QColor(255, 255, 255));
    QTest::keyClick(slider(QStringLiteral("Saturation")), Qt::Key_End);
    EXPECT_EQ(well->color(), QColor(0, 0, 255));
}

TEST_F(ColorWellTest, ACodeIsTakenAsSoonAsItIsComplete) {
    well->popover().open();
    auto* code = well->picker().findChild<QLineEdit*>();
    EXPECT_EQ(code->text(), u"#FF000080");
    code->selectAll();
    QTest::keyClicks(code, QStringLiteral("#00ff00"));
    EXPECT_EQ(well->color(), QColor(0, 255, 0));
    EXPECT_EQ(code->text(), u"#00ff00");
}

TEST_F(ColorWellTest, ACodeThatAScreenReaderSetsIsTaken) {
    well->popover().open();
    auto* code = well->picker().findChild<QLineEdit*>();
    accessible(code)->editableTextInterface()->replaceText(0, int(code->text().size()),
                                                           QStringLiteral("#0000ff"));
    EXPECT_EQ(well->color(), QColor(0, 0, 255));
}

TEST_F(ColorWellTest, WhatTheProgramSetsIsNoChoice) {
    well->setColor(Qt::green);
    EXPECT_EQ(chosen.count(), 0);
    EXPECT_EQ(well->picker().color(), QColor(0, 255, 0));
}

TEST_F(ColorWellTest, AScreenReaderHearsNameColourAndOpacity) {
    EXPECT_EQ(accessibleName(well), u"Couleur de l'annotation");
    EXPECT_EQ(accessible(well)->text(QAccessible::Description), u"#FF0000, opacité 50 %");
    EXPECT_EQ(slider(QStringLiteral("Teinte"))->valueText(), u"0°");
}

TEST(Checkerboard, TheFirstSquareIsDarkAndTheyAlternate) {
    QImage image(20, 13, QImage::Format_RGB32);
    QPainter painter(&image);
    paintCheckerboard(painter, QRectF(image.rect()), 6);
    painter.end();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool isDark = (x / 6 + y / 6) % 2 == 0;
            ASSERT_EQ(image.pixelColor(x, y), isDark ? checkerboardDark : checkerboardLight)
                << x << ", " << y;
        }
    }
}

TEST(Checkerboard, ItsGreysHaveTheLevelsWanted) {
    EXPECT_NEAR(checkerboardLight.redF(), 0.82, 0.002);
    EXPECT_NEAR(checkerboardDark.redF(), 0.68, 0.002);
}

} // namespace
