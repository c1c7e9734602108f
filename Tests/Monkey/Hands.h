// What a hand does to a window, as the windowing system tells it. Main thread.
#pragma once

#include <QPoint>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QWindow>

class QWidget;

namespace stillwick::monkey {

/// The mouse and the keyboard. Every event enters where the windowing system's enter: at the
/// window, and Qt finds out whom it is for. An event may end the window: what follows is then left
/// out.
class Hands final {
public:
    void click(QWindow* window, QPoint at, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {});
    void doubleClick(QWindow* window, QPoint at);
    void press(QWindow* window, QPoint at, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {});
    void moveTo(QWindow* window, QPoint at);
    void release(QWindow* window, QPoint at, Qt::MouseButton button = Qt::LeftButton,
                 Qt::KeyboardModifiers modifiers = {});
    void wheel(QWindow* window, QPoint at, int turn, Qt::KeyboardModifiers modifiers = {});

    void key(QWindow* window, int key, Qt::KeyboardModifiers modifiers = {},
             const QString& text = {});
    void type(QWindow* window, const QString& text);

    /// Drags files over the window from somewhere else; `isDropped` or away again.
    void dropFiles(QWindow* window, QPoint at, const QList<QUrl>& urls, bool isDropped);

private:
    void mouse(const QPointer<QWindow>& window, QPoint at, Qt::MouseButton button,
               QEvent::Type type, Qt::KeyboardModifiers modifiers);

    Qt::MouseButtons m_buttons;
    int m_time = 0; ///< milliseconds
};

} // namespace stillwick::monkey
