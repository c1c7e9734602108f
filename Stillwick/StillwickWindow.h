// A window of the application. Main thread.
#pragma once

#include <QMainWindow>

class QAction;
class QLabel;

namespace stillwick {

class AppState;
class ContentView;

/// A project's window: its menus, its toolbar, its content. Goes when it is closed.
class StillwickWindow final : public QMainWindow {
    Q_OBJECT

public:
    StillwickWindow();
    ~StillwickWindow() override;

    [[nodiscard]] AppState& state() const;
    [[nodiscard]] ContentView& content() const { return *m_content; }
    /// Opens a film, or a project by its name's ending.
    void openFile(const QString& path);

    /// Another window, with a fresh state.
    static StillwickWindow* openNew();

private:
    void makeMenus();
    void makeFileMenu();
    void makeVideoMenu();
    void makeToolbar();
    void showTitle();
    void openProject();
    void save();
    void saveAs();

    ContentView* m_content;
    QAction* m_playPause = nullptr;
    QLabel* m_videoName = nullptr;
};

} // namespace stillwick
