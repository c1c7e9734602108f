#include "Interface/SplitView.h"

#include "Shown.h"

#include <gtest/gtest.h>

namespace {

using namespace stillwick;
using namespace stillwick::testing;

SplitView* makeView(const QString& name) {
    auto* view = new SplitView(Qt::Horizontal, name);
    for (int i = 0; i < 2; ++i) {
        auto* pane = new QWidget;
        pane->setMinimumWidth(100);
        view->addWidget(pane);
    }
    view->setProportions({3, 1});
    return view;
}

double firstPart(const SplitView* view) {
    const QList<int> sizes = view->sizes();
    return double(sizes.at(0)) / (sizes.at(0) + sizes.at(1));
}

TEST(SplitViewTest, ProportionsHoldWhenTheWindowGrows) {
    auto* view = makeView(QStringLiteral("grows"));
    ShownWindow window({view}, QSize(800, 300));
    EXPECT_NEAR(firstPart(view), 0.75, 0.01);
    window.resize(1600, 300);
    QTest::qWait(1);
    EXPECT_NEAR(firstPart(view), 0.75, 0.01);
}

TEST(SplitViewTest, NoPaneIsLessThanItsLeastWidth) {
    auto* view = makeView(QStringLiteral("least"));
    const ShownWindow window({view}, QSize(300, 300));
    EXPECT_GE(view->sizes().at(1), 100);
}

TEST(SplitViewTest, ArrowsMoveTheLineAndADoubleClickBringsItBack) {
    auto* view = makeView(QStringLiteral("keys"));
    const ShownWindow window({view}, QSize(800, 300));
    auto* handle = qobject_cast<SplitHandle*>(view->handle(1));
    ASSERT_NE(handle, nullptr);
    const int before = handle->position();
    QTest::keyClick(handle, Qt::Key_Left);
    EXPECT_EQ(handle->position(), before - 16);
    QTest::keyClick(handle, Qt::Key_End);
    EXPECT_EQ(view->sizes().at(1), 100);
    QTest::mouseDClick(handle, Qt::LeftButton);
    EXPECT_EQ(handle->position(), before);
}

TEST(SplitViewTest, ANewViewOfTheSameNameBeginsAsTheLastWasLeft) {
    auto* view = makeView(QStringLiteral("again"));
    const ShownWindow window({view}, QSize(800, 300));
    qobject_cast<SplitHandle*>(view->handle(1))->moveTo(400);
    auto* next = makeView(QStringLiteral("again"));
    const ShownWindow other({next}, QSize(800, 300));
    EXPECT_NEAR(firstPart(next), firstPart(view), 0.01);
}

TEST(SplitViewTest, AScreenReaderMovesTheLine) {
    auto* view = makeView(QStringLiteral("reader"));
    const ShownWindow window({view}, QSize(800, 300));
    QAccessibleInterface* handle = accessible(view->handle(1));
    EXPECT_EQ(handle->role(), QAccessible::Splitter);
    EXPECT_EQ(handle->text(QAccessible::Name), u"Séparateur");
    handle->valueInterface()->setCurrentValue(300);
    EXPECT_EQ(handle->valueInterface()->currentValue().toInt(), 300);
    EXPECT_EQ(view->sizes().at(0), 300);
}

} // namespace
