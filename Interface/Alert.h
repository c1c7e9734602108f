// A notice that waits for an answer. Main thread.
#pragma once

#include <QString>

#include <functional>

class QMessageBox;
class QWidget;

namespace stillwick {

/// Opens a notice titled "Erreur" over the window, with the one button "OK"; `dismissed` is called
/// when it is gone, however it went. Does not wait. *Lifetime*: the notice goes with its window,
/// and then calls nobody.
QMessageBox* openErrorAlert(QWidget* window, const QString& message,
                            std::function<void()> dismissed = {});

/// Opens a notice with "OK" and, before it, a button that does `action`. Does not wait.
QMessageBox* openAlert(QWidget* window, const QString& title, const QString& message,
                       const QString& actionText, std::function<void()> action);

} // namespace stillwick
