// Which working state the keyboard is for. Main thread.
#pragma once

#include "Stillwick/AppState.h"

#include <QObject>
#include <QPointer>

class QKeyEvent;

namespace stillwick {

/// Turns the space bar into play and pause for the window that has the keyboard, and lets Return
/// press the button that has the focus, as some desktops do and others don't; every other key goes
/// its way. One for the process.
class KeyboardCoordinator final : public QObject {
    Q_OBJECT

public:
    /// Made at the first call; watches the keys from then on.
    static KeyboardCoordinator& shared();

    /// The state of the window that became active last; null once that is gone.
    [[nodiscard]] AppState* focusedState() const noexcept { return m_focusedState; }
    void setFocusedState(AppState* state);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void focusedStateChanged();

private:
    KeyboardCoordinator();
    [[nodiscard]] bool takes(const QKeyEvent& event) const;

    QPointer<AppState> m_focusedState;
};

/// Whether typing goes into the widget that has the focus.
[[nodiscard]] bool isTextBeingEdited();

/// Tells the coordinator whenever a window becomes the active one. Belongs to the window.
class WindowFocusReporter final : public QObject {
    Q_OBJECT

public:
    WindowFocusReporter(AppState& state, QWidget& window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    AppState& m_state;
};

} // namespace stillwick
