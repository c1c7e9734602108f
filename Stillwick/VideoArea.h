// The black part of a window, onto which films can be dropped. Main thread.
#pragma once

#include <QList>
#include <QUrl>
#include <QWidget>

#include <functional>

class QStackedWidget;

namespace stillwick {

/// Shows one of several pages on black, and an outline while files that it takes are over it.
class VideoArea final : public QWidget {
    Q_OBJECT

public:
    /// `takes` says whether a drop of these files would do something.
    explicit VideoArea(std::function<bool(const QList<QUrl>&)> takes, QWidget* parent = nullptr);

    [[nodiscard]] QStackedWidget& pages() const { return *m_pages; }

signals:
    void urlsDropped(const QList<QUrl>& urls);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    std::function<bool(const QList<QUrl>&)> m_takes;
    QStackedWidget* m_pages;
    QWidget* m_outline;
};

} // namespace stillwick
