#include "Interface/Popover.h"

#include "Shown.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

namespace {

using namespace stillwick;
using namespace stillwick::testing;

class PopoverTest : public ::testing::Test {
protected:
    PopoverTest() {
        auto* content = new QWidget;
        auto* layout = new QVBoxLayout(content);
        layout->addWidget(first);
        layout->addWidget(second);
        popover->setContent(content);
        QObject::connect(anchor, &QPushButton::clicked, popover, &Popover::toggle);
        anchor->setFocus();
    }

    QPushButton* anchor = new QPushButton(QStringLiteral("Description"));
    QPushButton* other = new QPushButton(QStringLiteral("Autre"));
    ShownWindow window{anchor, other};
    Popover* popover = new Popover(anchor, QStringLiteral("Description du groupe"));
    QLineEdit* first = new QLineEdit;
    QLineEdit* second = new QLineEdit;
};

TEST_F(PopoverTest, OpensWithTheFocusOnItsFirstField) {
    QTest::mouseClick(anchor, Qt::LeftButton);
    EXPECT_TRUE(popover->isOpen());
    EXPECT_TRUE(popover->isVisible());
    EXPECT_EQ(QApplication::focusWidget(), first);
}

TEST_F(PopoverTest, EscapeDismissesItAndGivesTheFocusBack) {
    popover->open();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(popover->isOpen());
    EXPECT_FALSE(popover->isVisible());
    EXPECT_EQ(QApplication::focusWidget(), anchor);
}

TEST_F(PopoverTest, APressOutsideDismissesItAndStillArrives) {
    popover->open();
    QSignalSpy clicks(other, &QPushButton::clicked);
    QTest::mouseClick(other, Qt::LeftButton, {}, QPoint(2, 2));
    EXPECT_FALSE(popover->isOpen());
    EXPECT_EQ(clicks.count(), 1);
}

TEST_F(PopoverTest, APressInsideKeepsItOpen) {
    popover->open();
    QTest::mouseClick(second, Qt::LeftButton);
    EXPECT_TRUE(popover->isOpen());
}

TEST_F(PopoverTest, ASecondPressOnItsAnchorDismissesIt) {
    QTest::mouseClick(anchor, Qt::LeftButton);
    QTest::mouseClick(anchor, Qt::LeftButton);
    EXPECT_FALSE(popover->isOpen());
}

TEST_F(PopoverTest, TabGoesRoundWithin) {
    popover->open();
    QTest::keyClick(first, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), second);
    QTest::keyClick(second, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), first);
    QTest::keyClick(first, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(QApplication::focusWidget(), second);
}

TEST_F(PopoverTest, LettersTypedInItsFieldStayThere) {
    popover->open();
    QTest::keyClicks(first, QStringLiteral("un c"));
    EXPECT_EQ(first->text(), u"un c");
}

TEST_F(PopoverTest, StaysWithinTheWindowAndBelowItsAnchor) {
    popover->open();
    EXPECT_GE(popover->x(), 0);
    EXPECT_LE(popover->geometry().right(), window.width());
    EXPECT_GT(popover->mapTo(&window, first->mapTo(popover, QPoint(0, 0))).y(),
              anchor->geometry().bottom());
}

TEST_F(PopoverTest, IsAboveItsAnchorWhereThereIsNoRoomBelow) {
    auto* low = new Popover(other, QStringLiteral("Bas"));
    auto* content = new QWidget;
    content->setFixedSize(80, 90);
    low->setContent(content);
    window.layout()->setAlignment(other, Qt::AlignBottom);
    QTest::qWait(1);
    low->open();
    EXPECT_LT(content->mapTo(&window, QPoint(0, content->height())).y(), other->geometry().top());
}

TEST_F(PopoverTest, GoesWhenItsAnchorIsHidden) {
    popover->open();
    anchor->hide();
    EXPECT_FALSE(popover->isOpen());
}

TEST_F(PopoverTest, SurvivesNeitherItsAnchorNorItsWindow) {
    popover->open();
    const QPointer<Popover> watched = popover;
    delete anchor;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(watched.isNull());
}

TEST_F(PopoverTest, AScreenReaderFindsANamedDialog) {
    popover->open();
    EXPECT_EQ(accessible(popover)->role(), QAccessible::Dialog);
    EXPECT_EQ(accessibleName(popover), u"Description du groupe");
}

} // namespace
