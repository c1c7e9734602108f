#include "Stillwick/AppStateFocus.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>

namespace stillwick {

namespace {

/// Where Return reached a button, presses it as its own key does, which opens menus too. Whether
/// it did.
bool pressByReturn(QObject& watched, const QKeyEvent& event) {
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (!isReturn || modifiers != Qt::NoModifier || !qobject_cast<QAbstractButton*>(&watched))
        return false;
    if (event.isAutoRepeat())
        return true;
    const QPointer<QObject> button(&watched);
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent space(type, Qt::Key_Space, Qt::NoModifier);
        if (button)
            QCoreApplication::sendEvent(button, &space);
    }
    return true;
}

} // namespace

bool isTextBeingEdited() {
    const QWidget* const focus = QApplication::focusWidget();
    if (const auto* line = qobject_cast<const QLineEdit*>(focus))
        return !line->isReadOnly();
    if (const auto* text = qobject_cast<const QPlainTextEdit*>(focus))
        return !text->isReadOnly();
    if (const auto* text = qobject_cast<const QTextEdit*>(focus))
        return !text->isReadOnly();
    return false;
}

KeyboardCoordinator& KeyboardCoordinator::shared() {
    // The application owns it, for it watches the application.
    static const QPointer<KeyboardCoordinator> coordinator(new KeyboardCoordinator);
    return *coordinator;
}

KeyboardCoordinator::KeyboardCoordinator() : QObject(QCoreApplication::instance()) {
    QCoreApplication::instance()->installEventFilter(this);
}

void KeyboardCoordinator::setFocusedState(AppState* state) {
    if (m_focusedState == state)
        return;
    m_focusedState = state;
    emit focusedStateChanged();
}

bool KeyboardCoordinator::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto& key = static_cast<const QKeyEvent&>(*event);
    // Each key is seen first where it enters the window, then at the widget that has the focus.
    const bool isForTheFilm = watched->isWindowType() && takes(key);
    if (isForTheFilm && !key.isAutoRepeat())
        m_focusedState->togglePlayPause();
    return isForTheFilm || pressByReturn(*watched, key);
}

bool KeyboardCoordinator::takes(const QKeyEvent& event) const {
    return event.key() == Qt::Key_Space && m_focusedState && m_focusedState->hasVideo() &&
           QApplication::activeModalWidget() == nullptr &&
           QApplication::activePopupWidget() == nullptr && !isTextBeingEdited();
}

WindowFocusReporter::WindowFocusReporter(AppState& state, QWidget& window)
    : QObject(&window), m_state(state) {
    window.installEventFilter(this);
    if (window.isActiveWindow())
        KeyboardCoordinator::shared().setFocusedState(&state);
}

bool WindowFocusReporter::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::WindowActivate)
        KeyboardCoordinator::shared().setFocusedState(&m_state);
    return QObject::eventFilter(watched, event);
}

} // namespace stillwick
