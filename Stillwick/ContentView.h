// What a window holds. Main thread.
#pragma once

#include <QList>
#include <QUrl>
#include <QWidget>

#include <memory>

class QMimeData;
class QStackedWidget;

namespace stillwick {

class AppState;
class CapturedFramesListView;
class ExportPanelView;
class ExtractionPreviewView;
class TimelineControlsView;
class VideoArea;
class VideoPlayerView;

/// The film and its timeline, the captures, and the preview with the export below it. Owns the
/// working state.
class ContentView final : public QWidget {
    Q_OBJECT

public:
    explicit ContentView(QWidget* parent = nullptr);
    ~ContentView() override;

    [[nodiscard]] AppState& state() const { return *m_state; }
    /// The window's title: the project's name, else the film's, else the program's.
    [[nodiscard]] QString windowTitle() const;
    /// Lets the user choose a film.
    void showImporter();
    /// Opens the first film among the files, if there is one.
    bool handleDroppedURLs(const QList<QUrl>& urls);
    /// Whether the file's name is that of a film.
    [[nodiscard]] static bool isMovieFile(const QUrl& url);

    [[nodiscard]] CapturedFramesListView& list() const { return *m_list; }
    [[nodiscard]] ExtractionPreviewView& preview() const { return *m_preview; }
    [[nodiscard]] ExportPanelView& exportPanel() const { return *m_export; }

signals:
    void titleChanged();

private:
    QWidget* makeCentre();
    QWidget* makePlaceholder();
    QWidget* makeRightColumn();
    void showVideo();
    void showError();

    std::unique_ptr<AppState> m_state;
    QStackedWidget* m_pages = nullptr;
    VideoPlayerView* m_player = nullptr;
    TimelineControlsView* m_timeline = nullptr;
    CapturedFramesListView* m_list = nullptr;
    ExtractionPreviewView* m_preview = nullptr;
    ExportPanelView* m_export = nullptr;
};

} // namespace stillwick
