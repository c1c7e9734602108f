// A window that must not go just now. Main thread.
#pragma once

#include <QPointer>
#include <QWidget>

namespace stillwick {

/// Keeps the window of a widget that runs an event loop of its own, as a drag does: a window that
/// is closed meanwhile goes as soon as the hold does.
class WindowHold final {
public:
    explicit WindowHold(const QWidget& widget);
    ~WindowHold();
    Q_DISABLE_COPY_MOVE(WindowHold)

private:
    QPointer<QWidget> m_window;
    bool m_goesWhenClosed;
};

} // namespace stillwick
