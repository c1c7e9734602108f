// The smaller controls: pickers, sliders, switches, groups that fold.
#include "Interface/Buttons.h"
#include "Interface/ContinuousSlider.h"
#include "Interface/DisclosureGroup.h"
#include "Interface/EmptyPanel.h"
#include "Interface/LabelledSlider.h"
#include "Interface/Labels.h"
#include "Interface/ProgressIndicator.h"
#include "Interface/SegmentedPicker.h"
#include "Interface/Switch.h"

#include "Shown.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QWheelEvent>

namespace {

using namespace stillwick;
using namespace stillwick::testing;

class SegmentedPickerTest : public ::testing::Test {
protected:
    SegmentedPickerTest() {
        picker->addSegment(u"cursorarrow", QStringLiteral("Sélection"));
        picker->addSegment(u"arrow.up.right", QStringLiteral("Flèche"));
        picker->addSegment(u"circle", QStringLiteral("Cercle"));
        QTest::qWait(1);
    }

    [[nodiscard]] Segment* segment(int index) const {
        return picker->findChildren<Segment*>().at(index);
    }

    SegmentedPicker* picker = new SegmentedPicker(QStringLiteral("Outil"));
    ShownWindow window{picker};
    QSignalSpy chosen{picker, &SegmentedPicker::indexChosen};
};

TEST_F(SegmentedPickerTest, BeginsWithTheFirst) {
    EXPECT_EQ(picker->currentIndex(), 0);
    EXPECT_EQ(chosen.count(), 0);
}

TEST_F(SegmentedPickerTest, AClickAnywhereInASegmentChoosesIt) {
    QTest::mouseClick(segment(2), Qt::LeftButton, {}, QPoint(2, 3));
    EXPECT_EQ(picker->currentIndex(), 2);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toInt(), 2);
}

TEST_F(SegmentedPickerTest, ArrowsChooseTheNeighbours) {
    segment(0)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(segment(0), Qt::Key_Right);
    EXPECT_EQ(picker->currentIndex(), 1);
    QTest::keyClick(segment(1), Qt::Key_Left);
    EXPECT_EQ(picker->currentIndex(), 0);
}

TEST_F(SegmentedPickerTest, WhatTheProgramSetsIsNoChoice) {
    picker->setCurrentIndex(1);
    EXPECT_EQ(picker->currentIndex(), 1);
    EXPECT_EQ(chosen.count(), 0);
}

TEST_F(SegmentedPickerTest, AScreenReaderFindsNamedRadioButtonsInAGroup) {
    EXPECT_EQ(accessible(picker)->role(), QAccessible::Grouping);
    EXPECT_EQ(accessibleName(picker), u"Outil");
    EXPECT_EQ(accessible(segment(1))->role(), QAccessible::RadioButton);
    EXPECT_EQ(accessibleName(segment(1)), u"Flèche");
    EXPECT_EQ(segment(1)->toolTip(), u"Flèche");
    accessible(segment(1))->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(picker->currentIndex(), 1);
    EXPECT_TRUE(accessible(segment(1))->state().checked);
}

class ContinuousSliderTest : public ::testing::Test {
protected:
    ContinuousSliderTest() {
        slider->setBounds(0, 10);
        slider->setAccessibleName(QStringLiteral("Adoucir"));
    }

    ContinuousSlider* slider = new ContinuousSlider;
    ShownWindow window{slider};
    QSignalSpy chosen{slider, &ContinuousSlider::valueChosen};
};

TEST_F(ContinuousSliderTest, APressJumpsToWhereItIs) {
    QTest::mousePress(slider, Qt::LeftButton, {}, slider->rect().center());
    EXPECT_NEAR(slider->realValue(), 5, 0.1);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, slider->rect().center());
    QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(slider->width() - 1, 10));
    EXPECT_EQ(slider->realValue(), 10);
}

// 0.002 + (0.02 - 0.002) is a little more than 0.02.
TEST_F(ContinuousSliderTest, RoundingDoesNotLeadOutOfItsBounds) {
    slider->setBounds(0.002, 0.02);
    QTest::keyClick(slider, Qt::Key_End);
    EXPECT_EQ(slider->realValue(), 0.02);
}

TEST_F(ContinuousSliderTest, ItCanBeDraggedOnFromThere) {
    QTest::mousePress(slider, Qt::LeftButton, {}, slider->rect().center());
    QTest::mouseMove(slider, QPoint(0, 10));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(0, 10));
    EXPECT_EQ(slider->realValue(), 0);
}

TEST_F(ContinuousSliderTest, ArrowsAndPageKeysStep) {
    slider->setStep(0.5);
    slider->setRealValue(2);
    QTest::keyClick(slider, Qt::Key_Right);
    EXPECT_NEAR(slider->realValue(), 2.5, 1e-4);
    QTest::keyClick(slider, Qt::Key_PageUp);
    EXPECT_NEAR(slider->realValue(), 7.5, 1e-4);
    QTest::keyClick(slider, Qt::Key_Home);
    EXPECT_EQ(slider->realValue(), 0);
    EXPECT_EQ(chosen.count(), 3);
}

TEST_F(ContinuousSliderTest, TheWheelIsForThePanelThatItStandsIn) {
    slider->setRealValue(5);
    constexpr QPoint oneClick(0, 120);
    QWheelEvent turn(slider->rect().center(), slider->mapToGlobal(slider->rect().center()), {},
                     oneClick, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(slider, &turn);
    EXPECT_EQ(slider->realValue(), 5);
    EXPECT_EQ(chosen.count(), 0);
    EXPECT_FALSE(turn.isAccepted());
}

TEST_F(ContinuousSliderTest, WhatTheProgramSetsIsExactAndNoChoice) {
    slider->setRealValue(1.0 / 3);
    EXPECT_EQ(slider->realValue(), 1.0 / 3);
    EXPECT_EQ(chosen.count(), 0);
}

TEST_F(ContinuousSliderTest, AValueOutsideIsBroughtWithin) {
    slider->setRealValue(12);
    EXPECT_EQ(slider->realValue(), 10);
    slider->setBounds(0, 4);
    EXPECT_EQ(slider->realValue(), 4);
}

TEST_F(ContinuousSliderTest, WhileItIsHeldTheProgramDoesNotMoveIt) {
    QTest::mousePress(slider, Qt::LeftButton, {}, slider->rect().center());
    const double held = slider->realValue();
    slider->setRealValue(1);
    EXPECT_EQ(slider->realValue(), held);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, slider->rect().center());
}

TEST_F(ContinuousSliderTest, AScreenReaderReadsAndSetsTheRealValue) {
    slider->setRealValue(2.5);
    QAccessibleValueInterface* value = accessible(slider)->valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(accessible(slider)->role(), QAccessible::Slider);
    EXPECT_EQ(value->currentValue().toDouble(), 2.5);
    EXPECT_EQ(value->minimumValue().toDouble(), 0);
    EXPECT_EQ(value->maximumValue().toDouble(), 10);
    value->setCurrentValue(7.25);
    EXPECT_EQ(slider->realValue(), 7.25);
    EXPECT_EQ(chosen.count(), 1);
}

TEST(LabelledSliderTest, ShowsItsTitleAndItsValueWithoutDecimals) {
    auto* line = new LabelledSlider(QStringLiteral("Largeur"), 1, 20,
                                    QStringLiteral("Épaisseur de la bordure"));
    const ShownWindow window{line};
    line->setValue(6.4);
    QStringList texts;
    for (const QLabel* label : line->findChildren<QLabel*>())
        texts.push_back(label->text());
    EXPECT_TRUE(texts.contains(QStringLiteral("Largeur")));
    EXPECT_TRUE(texts.contains(QStringLiteral("6"))) << texts.join(u',').toStdString();
    EXPECT_EQ(line->toolTip(), u"Épaisseur de la bordure");
    EXPECT_EQ(accessibleName(&line->slider()), u"Largeur");
    EXPECT_EQ(accessible(&line->slider())->text(QAccessible::Description),
              u"Épaisseur de la bordure");
}

TEST(LabelledSliderTest, TellsWhatIsChosenAndShowsIt) {
    auto* line = new LabelledSlider(QStringLiteral("Adoucir"), 0, 10);
    const ShownWindow window{line};
    QSignalSpy chosen(line, &LabelledSlider::valueChosen);
    QTest::keyClick(&line->slider(), Qt::Key_End);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toDouble(), 10);
    EXPECT_EQ(line->findChild<FixedDigitLabel*>()->text(), u"10");
}

TEST(FixedDigitLabelTest, EveryTimeIsAsWide) {
    FixedDigitLabel label;
    label.setFont(QFont(QStringLiteral("Noto Sans")));
    label.setText(QStringLiteral("11:11.111"));
    const int width = label.sizeHint().width();
    label.setText(QStringLiteral("08:40.268"));
    EXPECT_EQ(label.sizeHint().width(), width);
}

TEST(LabelsTest, AScreenReaderReadsWhatIsShownAndThenWhatThatIs) {
    auto* const label = new FixedDigitLabel;
    label->setAccessibleName(QStringLiteral("Instant"));
    label->setText(QStringLiteral("00:01.250"));
    const ShownWindow window{label};
    EXPECT_EQ(accessible(label)->role(), QAccessible::StaticText);
    EXPECT_EQ(accessibleName(label), u"00:01.250");
    EXPECT_EQ(accessible(label)->text(QAccessible::Description), u"Instant");
    label->setText(QStringLiteral("00:02.000"));
    EXPECT_EQ(accessibleName(label), u"00:02.000");
}

TEST(ElidedLabelTest, WhatIsCutIsInItsToolTip) {
    auto* label = new ElidedLabel;
    label->setText(QStringLiteral("Un nom de dossier bien trop long pour sa place"));
    ShownWindow window({label}, QSize(120, 60));
    EXPECT_EQ(label->toolTip(), label->text());
    window.resize(900, 60);
    QTest::qWait(1);
    EXPECT_TRUE(label->toolTip().isEmpty());
}

TEST(SwitchTest, AClickOnItsTextAndTheSpaceBarTurnIt) {
    auto* control = new Switch(QStringLiteral("Contour sticker"));
    const ShownWindow window{control};
    QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(4, control->height() / 2));
    EXPECT_TRUE(control->isChecked());
    QTest::keyClick(control, Qt::Key_Space);
    EXPECT_FALSE(control->isChecked());
    EXPECT_EQ(accessible(control)->role(), QAccessible::CheckBox);
    EXPECT_EQ(accessibleName(control), u"Contour sticker");
}

class DisclosureGroupTest : public ::testing::Test {
protected:
    [[nodiscard]] static DisclosureGroup* makeGroup(const QString& title) {
        auto* group = new DisclosureGroup(u"scribble.variable", title);
        group->setContent(new QLabel(QStringLiteral("Contenu")));
        return group;
    }
    [[nodiscard]] static DisclosureHeader* header(const DisclosureGroup* group) {
        return group->findChild<DisclosureHeader*>();
    }
};

TEST_F(DisclosureGroupTest, TheFirstBeginsCollapsed) {
    DisclosureGroup* group = makeGroup(QStringLiteral("Premier"));
    const ShownWindow window{group};
    EXPECT_FALSE(group->isExpanded());
    EXPECT_FALSE(group->findChild<QLabel*>()->isVisible());
}

TEST_F(DisclosureGroupTest, AClickAndTheKeysOpenAndCloseIt) {
    DisclosureGroup* group = makeGroup(QStringLiteral("Touches"));
    const ShownWindow window{group};
    QTest::mouseClick(header(group), Qt::LeftButton);
    EXPECT_TRUE(group->isExpanded());
    EXPECT_TRUE(group->findChild<QLabel*>()->isVisible());
    QTest::keyClick(header(group), Qt::Key_Left);
    EXPECT_FALSE(group->isExpanded());
    QTest::keyClick(header(group), Qt::Key_Right);
    EXPECT_TRUE(group->isExpanded());
    QTest::keyClick(header(group), Qt::Key_Space);
    EXPECT_FALSE(group->isExpanded());
}

TEST_F(DisclosureGroupTest, ANewOneOfTheSameTitleBeginsAsTheLastWasLeft) {
    DisclosureGroup* group = makeGroup(QStringLiteral("Mémoire"));
    group->setExpanded(true);
    delete group;
    DisclosureGroup* next = makeGroup(QStringLiteral("Mémoire"));
    const ShownWindow window{next};
    EXPECT_TRUE(next->isExpanded());
    EXPECT_TRUE(next->findChild<QLabel*>()->isVisible());
}

TEST_F(DisclosureGroupTest, AScreenReaderHearsWhetherItIsOpenAndOpensIt) {
    DisclosureGroup* group = makeGroup(QStringLiteral("Contours"));
    const ShownWindow window{group};
    QAccessibleInterface* button = accessible(header(group));
    EXPECT_EQ(button->text(QAccessible::Name), u"Contours");
    EXPECT_TRUE(button->state().expandable);
    EXPECT_TRUE(button->state().collapsed);
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(button->state().expanded);
    EXPECT_TRUE(group->isExpanded());
}

TEST(ButtonsTest, ASymbolAloneIsNamedByItsHelpText) {
    auto* button = new SymbolButton(u"trash", QStringLiteral("Supprimer le groupe"),
                                    SymbolButton::Border::none);
    const ShownWindow window{button};
    EXPECT_EQ(button->toolTip(), u"Supprimer le groupe");
    EXPECT_EQ(accessibleName(button), u"Supprimer le groupe");
    EXPECT_EQ(accessible(button)->role(), QAccessible::Button);
}

TEST(ButtonsTest, AHelpTextThatIsTheNameIsReadOnce) {
    auto* button = new SymbolButton(u"trash", QStringLiteral("Supprimer le groupe"),
                                    SymbolButton::Border::none);
    auto* slider = new ContinuousSlider;
    slider->setAccessibleName(QStringLiteral("Épaisseur"));
    slider->setToolTip(QStringLiteral("Épaisseur"));
    const ShownWindow window{button, slider};
    EXPECT_EQ(accessible(button)->text(QAccessible::Description), QString());
    EXPECT_EQ(accessible(slider)->text(QAccessible::Description), QString());
    button->setToolTip(QStringLiteral("Avec ses captures"));
    EXPECT_EQ(accessible(button)->text(QAccessible::Description), u"Avec ses captures");
}

TEST(ButtonsTest, AScreenReaderPressesASymbolUnlessItIsDisabled) {
    auto* button = new SymbolButton(u"trash", QStringLiteral("Supprimer le groupe"),
                                    SymbolButton::Border::none);
    const ShownWindow window{button};
    int pressed = 0;
    QObject::connect(button, &QAbstractButton::clicked, button, [&pressed] { ++pressed; });
    accessible(button)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    button->setEnabled(false);
    EXPECT_TRUE(accessible(button)->state().disabled);
    accessible(button)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(pressed, 1);
}

TEST(ButtonsTest, AProminentButtonIsFilledWithTheAccent) {
    auto* button = new ProminentButton(u"camera.fill", QStringLiteral("Capturer"));
    const ShownWindow window{button};
    EXPECT_EQ(button->grab().toImage().pixelColor(6, button->height() / 2),
              themeColor(ThemeColor::accentFill, ColorScheme::light));
    EXPECT_EQ(accessibleName(button), u"Capturer");
}

TEST(ButtonsTest, TheFocusIsSeenOnceTheKeyboardIsUsed) {
    auto* first = new QPushButton(QStringLiteral("Un"));
    const QList<QWidget*> controls{
        new SymbolButton(u"trash", QStringLiteral("Supprimer"), SymbolButton::Border::none),
        new ProminentButton(u"camera.fill", QStringLiteral("Capturer")),
        makeLabelledButton(u"folder", QStringLiteral("Dossier…")),
        new Switch(QStringLiteral("Recadrer")),
        new ContinuousSlider,
        new DisclosureHeader(u"scribble.variable", QStringLiteral("Contours"), nullptr),
    };
    ShownWindow window{first};
    for (QWidget* control : controls)
        window.layout()->addWidget(control);
    window.resize(300, 400);
    QTest::qWait(1);
    first->setFocus();
    QList<QImage> before;
    for (QWidget* control : controls)
        before.push_back(control->grab().toImage());
    for (int i = 0; i < int(controls.size()); ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        ASSERT_EQ(QApplication::focusWidget(), controls.at(i)) << i;
        EXPECT_GT(differingPixels(before.at(i), controls.at(i)->grab().toImage()), 40)
            << controls.at(i)->metaObject()->className();
    }
}

TEST(ProgressIndicatorTest, ItTurnsAndIsCalledBusy) {
    auto* indicator = new ProgressIndicator;
    const ShownWindow window{indicator};
    const QImage before = indicator->grab().toImage();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return differingPixels(before, indicator->grab().toImage()) > 10; }, 5000));
    EXPECT_TRUE(accessible(indicator)->state().busy);
    EXPECT_EQ(accessibleName(indicator), u"En cours");
}

TEST(EmptyPanelTest, ShowsItsTitleAndItsDescription) {
    auto* panel = new EmptyPanel(u"photo", QStringLiteral("Aucun aperçu"),
                                 QStringLiteral("Capturez une image."));
    const ShownWindow window{panel};
    QStringList texts;
    for (const QLabel* label : panel->findChildren<QLabel*>())
        texts.push_back(label->text());
    EXPECT_EQ(texts,
              (QStringList{QStringLiteral("Aucun aperçu"), QStringLiteral("Capturez une image.")}));
}

} // namespace
