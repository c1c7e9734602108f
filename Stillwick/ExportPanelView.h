// The panel that starts exports and tells how they go. Main thread.
#pragma once

#include "Stillwick/ExportMode.h"

#include <QString>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace stillwick {

class AppState;
class ElidedLabel;
class Switch;

class ExportPanelView final : public QWidget {
    Q_OBJECT

public:
    /// `state` outlives the view.
    explicit ExportPanelView(AppState& state, QWidget* parent = nullptr);

    /// Whether an export could start now.
    [[nodiscard]] bool canExport() const;
    /// What the last export came to.
    [[nodiscard]] QString exportSummary() const;
    /// Lets the user choose the output folder.
    void chooseFolder();

private:
    QWidget* makeFolderRow();
    QWidget* makeButtons();
    QWidget* makeFailures();
    void showFolder();
    void showFilter();
    void showProgress();
    void showFailures();
    void showEnablement();
    void announceEnd();

    AppState& m_state;
    ElidedLabel* m_folder = nullptr;
    Switch* m_crop = nullptr;
    QLabel* m_filter = nullptr;
    QPushButton* m_perSubject = nullptr;
    QPushButton* m_merged = nullptr;
    QLabel* m_hint = nullptr;
    QWidget* m_progressRow = nullptr;
    QProgressBar* m_progress = nullptr;
    QLabel* m_progressText = nullptr;
    QWidget* m_failures = nullptr;
    QLabel* m_failureCount = nullptr;
    QScrollArea* m_failureScroll = nullptr;
};

} // namespace stillwick
