#include "Monkey.h"

#include "Invariants.h"

#include "Stillwick/StillwickWindow.h"

#include <QApplication>
#include <QFileDialog>

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>

namespace stillwick::monkey {

namespace {

constexpr int shortestPause = 0; // milliseconds
constexpr int longestPause = 60; // now and then much longer, so that work comes to its end
constexpr int seldomPause = 1'500;

} // namespace

Monkey::Monkey(std::uint64_t seed, Places places, bool isTelling)
    : m_random(seed), m_places(std::move(places)), m_isTelling(isTelling) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Monkey::tick);
}

void Monkey::start(std::chrono::seconds span) {
    m_end = std::chrono::steady_clock::now() + span;
    openWindow();
    wait();
}

int Monkey::upTo(int greatest) {
    // The library's distributions differ from one to the other; a remainder does not.
    return greatest <= 0 ? 0 : int(m_random() % std::uint64_t(greatest + 1));
}

void Monkey::wait() {
    m_timer.start(in(60) ? seldomPause : shortestPause + upTo(longestPause));
}

void Monkey::tick() {
    emit acted();
    if (!m_complaint.isEmpty() || std::chrono::steady_clock::now() >= m_end) {
        if (m_depth > 0) { // out of the loops first
            actWithinALoop();
            m_timer.start(1);
        } else {
            emit finished();
        }
        return;
    }
    wait(); // also where what follows runs a loop of its own
    ++m_depth;
    if (m_depth > 1)
        actWithinALoop();
    else
        actOnce();
    --m_depth;
    ++m_actions;
    if (m_depth == 0)
        judge();
}

/// A dialog that is asked within another, or a drag.
void Monkey::actWithinALoop() {
    if (QApplication::activeModalWidget() != nullptr) {
        answerDialog();
        return;
    }
    if (QApplication::activePopupWidget() != nullptr) {
        answerPopup();
        return;
    }
    QWindow* const window = m_dragged ? m_dragged.data() : frontWindow();
    if (window == nullptr)
        return;
    const QPoint at(upTo(window->width() - 1), upTo(window->height() - 1));
    if (in(12))
        closeWindow(); // whoever drags does not do that, but a session that ends does
    else if (in(4))
        m_hands.key(window, Qt::Key_Escape);
    else if (in(3))
        m_hands.release(window, at);
    else
        m_hands.moveTo(window, at);
}

void Monkey::actOnce() {
    if (QApplication::activePopupWidget() != nullptr && !in(4)) {
        answerPopup();
        return;
    }
    const QWidget* const modal = QApplication::activeModalWidget();
    // In a file dialog keys could reach any file.
    if (qobject_cast<const QFileDialog*>(modal) != nullptr || (modal != nullptr && !in(6))) {
        answerDialog();
        return;
    }
    if (windows().isEmpty()) {
        openWindow();
        return;
    }
    const Action& action = chosen();
    if (m_isTelling) {
        std::fprintf(stderr, "%d %s\n", m_actions, action.name);
        std::fflush(stderr);
    }
    (this->*action.act)();
}

const Monkey::Action& Monkey::chosen() {
    static constexpr std::array actions{
        Action{8, "capture", &Monkey::capture},
        Action{10, "press a shortcut", &Monkey::pressShortcut},
        Action{12, "press a navigation key", &Monkey::pressNavigationKey},
        Action{6, "type", &Monkey::typeText},
        Action{24, "click", &Monkey::click},
        Action{8, "click with another button", &Monkey::clickOther},
        Action{4, "double click", &Monkey::doubleClick},
        Action{4, "turn the wheel", &Monkey::turnWheel},
        Action{6, "drag", &Monkey::drag},
        Action{5, "drag a row", &Monkey::dragRow},
        Action{8, "drag a slider", &Monkey::dragSlider},
        Action{8, "draw a mark", &Monkey::drawMark},
        Action{4, "hover", &Monkey::hover},
        Action{2, "drop something", &Monkey::dropSomething},
        Action{3, "resize", &Monkey::resize},
        Action{3, "activate", &Monkey::activate},
        Action{1, "close a window", &Monkey::closeWindow},
        Action{1, "open a window", &Monkey::openWindow},
        Action{1, "open a file", &Monkey::openFile},
        Action{3, "export", &Monkey::startExport},
        Action{5, "edit groups", &Monkey::editGroups},
        Action{2, "read aloud", &Monkey::readAloud},
        Action{6, "act through accessibility", &Monkey::actThroughAccessibility},
        Action{1, "take a picture", &Monkey::takePicture},
        Action{1, "change the colours", &Monkey::changeColours},
        Action{3, "use the menu bar", &Monkey::useTheMenuBar},
    };
    static constexpr int total =
        std::accumulate(actions.begin(), actions.end(), 0,
                        [](int sum, const Action& action) { return sum + action.weight; });
    int place = upTo(total - 1);
    for (const Action& action : actions) {
        place -= action.weight;
        if (place < 0)
            return action;
    }
    return actions.back();
}

void Monkey::judge() {
    for (const StillwickWindow* const window : windows()) {
        const QString broken = brokenRule(*window);
        if (!broken.isEmpty() && m_complaint.isEmpty())
            m_complaint = QStringLiteral("Not so any more: %1.").arg(broken);
    }
}

QList<StillwickWindow*> Monkey::windows() {
    QList<StillwickWindow*> found;
    for (QWidget* const widget : QApplication::topLevelWidgets())
        if (auto* const window = qobject_cast<StillwickWindow*>(widget);
            window != nullptr && window->isVisible())
            found.append(window);
    // Their order must not depend on where they lie in memory.
    std::sort(found.begin(), found.end(), [](const QWidget* one, const QWidget* other) {
        return one->property("number").toInt() < other->property("number").toInt();
    });
    return found;
}

StillwickWindow* Monkey::anyWindow() {
    const QList<StillwickWindow*> open = windows();
    return open.isEmpty() ? nullptr : oneOf(open);
}

/// The window that input goes to: a dialog, else the active window, else any.
QWindow* Monkey::frontWindow() {
    for (QWidget* const widget :
         {QApplication::activePopupWidget(), QApplication::activeModalWidget(),
          QApplication::activeWindow(), static_cast<QWidget*>(anyWindow())})
        if (widget != nullptr && widget->windowHandle() != nullptr)
            return widget->windowHandle();
    return nullptr;
}

Monkey::Spot Monkey::spotIn(const QWidget& widget) {
    const QPoint at(upTo(widget.width() - 1), upTo(widget.height() - 1));
    return {widget.window()->windowHandle(), widget.mapTo(widget.window(), at)};
}

QWidget* Monkey::anyWidget(const char* className) {
    QList<QWidget*> candidates;
    if (const StillwickWindow* const window = anyWindow())
        for (QWidget* const widget : window->findChildren<QWidget*>())
            if (widget->isVisible() && !widget->isWindow() && widget->window() == window &&
                widget->inherits(className) && !widget->size().isEmpty())
                candidates.append(widget);
    return candidates.isEmpty() ? nullptr : oneOf(candidates);
}

/// Most often within some part of the window, so that small ones are met as often as large ones.
Monkey::Spot Monkey::anySpot() {
    const QWidget* const widget = in(4) ? nullptr : anyWidget("QWidget");
    if (widget != nullptr)
        return spotIn(*widget);
    StillwickWindow* const window = anyWindow();
    return window == nullptr ? Spot{nullptr, {}} : spotIn(*window);
}

} // namespace stillwick::monkey
