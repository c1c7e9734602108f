// The space bar and the menus, with one window and with two.
#include "EventLoop.h"
#include "SampleState.h"

#include "Stillwick/AppStateFocus.h"
#include "Stillwick/ContentView.h"
#include "Stillwick/StillwickWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QWindow>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;

class AppStateFocusTest : public ::testing::Test {
protected:
    AppStateFocusTest() { (void)KeyboardCoordinator::shared(); }
    void TearDown() override {
        for (const auto& window : windows)
            delete window.data();
    }

    StillwickWindow& newWindow() {
        auto* const window = StillwickWindow::openNew();
        windows.append(window);
        window->activateWindow();
        EXPECT_TRUE(runUntil([&] { return window->isActiveWindow(); }));
        return *window;
    }
    static void press(StillwickWindow& window, int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.windowHandle(), Qt::Key(key), modifiers);
        QCoreApplication::processEvents();
    }
    static bool startsPlaying(const StillwickWindow& window) {
        return runUntil([&] { return window.state().isPlaying(); }, 1500ms);
    }
    static QAction* action(const StillwickWindow& window, const char* text) {
        for (auto* menu : window.menuBar()->actions())
            for (auto* each : menu->menu()->actions())
                if (each->text() == QString::fromUtf8(text))
                    return each;
        return nullptr;
    }

    QList<QPointer<StillwickWindow>> windows;
};

TEST_F(AppStateFocusTest, SpacePlaysAndPausesTheFilm) {
    StillwickWindow& window = newWindow();
    load(window.state());
    press(window, Qt::Key_Space);
    EXPECT_TRUE(startsPlaying(window));
    EXPECT_NE(action(window, "Pause (Espace)"), nullptr);
    press(window, Qt::Key_Space);
    EXPECT_TRUE(runUntil([&] { return !window.state().isPlaying(); }));
    EXPECT_NE(action(window, "Lecture (Espace)"), nullptr);
}

TEST_F(AppStateFocusTest, WithoutAVideoSpaceGoesToTheButtonThatHasTheFocus) {
    StillwickWindow& window = newWindow();
    QPushButton button(&window);
    bool isPressed = false;
    QObject::connect(&button, &QPushButton::clicked, [&isPressed] { isPressed = true; });
    button.show();
    button.setFocus();
    press(window, Qt::Key_Space);
    EXPECT_TRUE(isPressed);
}

TEST_F(AppStateFocusTest, ReturnPressesTheButtonThatHasTheFocus) {
    StillwickWindow& window = newWindow();
    load(window.state());
    QPushButton button(&window);
    int presses = 0;
    QObject::connect(&button, &QPushButton::clicked, [&presses] { ++presses; });
    button.show();
    button.setFocus();
    press(window, Qt::Key_Return);
    EXPECT_EQ(presses, 1);
    press(window, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(presses, 2);
    press(window, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(presses, 2);
    EXPECT_FALSE(window.state().isPlaying());
}

TEST_F(AppStateFocusTest, AButtonThatIsGoneOnceItIsPressedTakesReturn) {
    StillwickWindow& window = newWindow();
    const QPointer<QPushButton> button = new QPushButton(&window);
    QObject::connect(button, &QPushButton::pressed, [&button] { delete button.data(); });
    button->show();
    button->setFocus();
    press(window, Qt::Key_Return);
    EXPECT_TRUE(button.isNull());
}

TEST_F(AppStateFocusTest, InATextSpaceAndLettersAreTyped) {
    StillwickWindow& window = newWindow();
    load(window.state());
    QLineEdit line(&window);
    line.show();
    line.setFocus();
    for (const int key : {Qt::Key_A, Qt::Key_Space, Qt::Key_C})
        QTest::keyClick(window.windowHandle(), Qt::Key(key));
    EXPECT_EQ(line.text(), QStringLiteral("a c"));
    EXPECT_EQ(window.state().frameCount(), 0);
    QTest::keyClick(window.windowHandle(), Qt::Key_Left);
    EXPECT_EQ(line.cursorPosition(), 2);
    EXPECT_FALSE(startsPlaying(window));
}

TEST_F(AppStateFocusTest, InATextThatCannotBeEditedSpacePlays) {
    StillwickWindow& window = newWindow();
    load(window.state());
    QPlainTextEdit text(&window);
    text.setReadOnly(true);
    text.show();
    text.setFocus();
    press(window, Qt::Key_Space);
    EXPECT_TRUE(startsPlaying(window));
}

TEST_F(AppStateFocusTest, ArrowsAndCActThroughTheMenus) {
    StillwickWindow& window = newWindow();
    load(window.state());
    const auto isAt = [&](const CMTime& time) {
        return runUntil([&] { return window.state().currentTime() == time; }, 5s);
    };
    press(window, Qt::Key_Right);
    EXPECT_TRUE(isAt(CMTime::make(1, 30)));
    press(window, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_TRUE(isAt(CMTime::make(31, 30)));
    press(window, Qt::Key_Left);
    EXPECT_TRUE(isAt(CMTime::make(1, 1)));
    press(window, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_TRUE(isAt(CMTime::zero()));
    press(window, Qt::Key_C);
    EXPECT_EQ(window.state().frameCount(), 1);
}

TEST_F(AppStateFocusTest, WithTwoWindowsTheActiveOneIsMeant) {
    StillwickWindow& first = newWindow();
    load(first.state());
    StillwickWindow& second = newWindow();
    load(second.state());
    EXPECT_EQ(KeyboardCoordinator::shared().focusedState(), &second.state());
    press(second, Qt::Key_Space);
    EXPECT_TRUE(startsPlaying(second));
    EXPECT_FALSE(first.state().isPlaying());
    first.activateWindow();
    ASSERT_TRUE(runUntil([&] { return first.isActiveWindow(); }));
    EXPECT_EQ(KeyboardCoordinator::shared().focusedState(), &first.state());
    press(first, Qt::Key_C);
    EXPECT_EQ(first.state().frameCount(), 1);
    EXPECT_EQ(second.state().frameCount(), 0);
}

TEST_F(AppStateFocusTest, AClosedWindowsStateIsForgotten) {
    StillwickWindow& window = newWindow();
    EXPECT_EQ(KeyboardCoordinator::shared().focusedState(), &window.state());
    window.close();
    EXPECT_TRUE(runUntil([] { return KeyboardCoordinator::shared().focusedState() == nullptr; }));
}

TEST_F(AppStateFocusTest, TheMenusHaveTheirLabelsAndKeys) {
    const StillwickWindow& window = newWindow();
    const std::pair<const char*, QKeySequence> expected[] = {
        {"Nouveau projet", Qt::CTRL | Qt::Key_N},
        {"Ouvrir un projet…", Qt::CTRL | Qt::Key_O},
        {"Enregistrer", Qt::CTRL | Qt::Key_S},
        {"Enregistrer sous…", Qt::CTRL | Qt::SHIFT | Qt::Key_S},
        {"Export fusionné", Qt::CTRL | Qt::Key_E},
        {"Export par sujet", Qt::CTRL | Qt::SHIFT | Qt::Key_E},
        {"Lecture (Espace)", {}},
        {"Image précédente", Qt::Key_Left},
        {"Image suivante", Qt::Key_Right},
        {"Reculer (intervalle)", Qt::SHIFT | Qt::Key_Left},
        {"Avancer (intervalle)", Qt::SHIFT | Qt::Key_Right},
        {"Capturer l'image", Qt::Key_C}};
    for (const auto& [label, keys] : expected) {
        ASSERT_NE(action(window, label), nullptr) << label;
        EXPECT_EQ(action(window, label)->shortcut(), keys) << label;
        EXPECT_TRUE(action(window, label)->isEnabled()) << label;
    }
}

} // namespace

} // namespace stillwick::testing
