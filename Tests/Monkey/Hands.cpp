#include "Hands.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QWheelEvent>

namespace stillwick::monkey {

namespace {

constexpr int betweenEvents = 10;    // milliseconds
constexpr int betweenClicks = 1'000; // too long for a double click

} // namespace

void Hands::mouse(const QPointer<QWindow>& window, QPoint at, Qt::MouseButton button,
                  QEvent::Type type, Qt::KeyboardModifiers modifiers) {
    if (!window)
        return;
    m_time += betweenEvents;
    qt_handleMouseEvent(window, at, window->mapToGlobal(at), m_buttons, button, type, modifiers,
                        m_time);
}

void Hands::press(QWindow* window, QPoint at, Qt::MouseButton button,
                  Qt::KeyboardModifiers modifiers) {
    m_buttons |= button;
    mouse(window, at, button, QEvent::MouseButtonPress, modifiers);
}

void Hands::moveTo(QWindow* window, QPoint at) {
    mouse(window, at, Qt::NoButton, QEvent::MouseMove, {});
}

void Hands::release(QWindow* window, QPoint at, Qt::MouseButton button,
                    Qt::KeyboardModifiers modifiers) {
    m_buttons &= ~Qt::MouseButtons(button);
    mouse(window, at, button, QEvent::MouseButtonRelease, modifiers);
}

void Hands::click(QWindow* window, QPoint at, Qt::MouseButton button,
                  Qt::KeyboardModifiers modifiers) {
    const QPointer<QWindow> target(window);
    m_time += betweenClicks;
    moveTo(target, at);
    press(target, at, button, modifiers);
    release(target, at, button, modifiers);
}

void Hands::doubleClick(QWindow* window, QPoint at) {
    const QPointer<QWindow> target(window);
    click(target, at);
    press(target, at);
    release(target, at);
}

void Hands::wheel(QWindow* window, QPoint at, int turn, Qt::KeyboardModifiers modifiers) {
    QWheelEvent event(at, window->mapToGlobal(at), {}, {0, turn}, m_buttons, modifiers,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(window, &event);
}

void Hands::key(QWindow* window, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    const QPointer<QWindow> target(window);
    qt_handleKeyEvent(target, QEvent::KeyPress, key, modifiers, text);
    if (target)
        qt_handleKeyEvent(target, QEvent::KeyRelease, key, modifiers, text);
}

void Hands::type(QWindow* window, const QString& text) {
    const QPointer<QWindow> target(window);
    for (const QChar letter : text) {
        if (!target)
            return;
        key(target, letter == u'\n' ? int(Qt::Key_Return) : int(letter.toUpper().unicode()), {},
            QString(letter));
    }
}

void Hands::dropFiles(QWindow* window, QPoint at, const QList<QUrl>& urls, bool isDropped) {
    const QPointer<QWindow> target(window);
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(target, &enter);
    if (target && isDropped) {
        QDragMoveEvent move(at + QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(target, &move);
    }
    if (!target)
        return;
    if (isDropped && enter.isAccepted()) {
        QDropEvent drop(at + QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(target, &drop);
    } else {
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(target, &leave);
    }
}

} // namespace stillwick::monkey
