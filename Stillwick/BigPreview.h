// The cut-out at large, with its marks. Main thread.
#pragma once

#include <QImage>
#include <QWidget>

class QAction;
class QMimeData;

namespace stillwick {

class AnnotationCanvas;
class EmptyPanel;
class ProgressIndicator;

/// Shows a cut-out on a checkerboard with the canvas exactly over it; or that there is none; or
/// that it is being made. The cut-out can be copied (by the keyboard while the preview has the
/// focus, by its context menu) and dragged away.
class BigPreview final : public QWidget {
    Q_OBJECT

public:
    explicit BigPreview(QWidget* parent = nullptr);

    void showImage(const QImage& image);
    void showNothing();
    void showProgress();

    [[nodiscard]] AnnotationCanvas& canvas() const { return *m_canvas; }
    /// Where the cut-out is.
    [[nodiscard]] QRect imageRect() const;
    [[nodiscard]] const QImage& image() const noexcept { return m_image; }
    [[nodiscard]] QSize minimumSizeHint() const override;
    /// Begins a drag of this content, which it takes, under a small picture of the cut-out. Returns
    /// when they were dropped.
    void startDrag(QMimeData* content);

signals:
    void copyRequested();
    void dragRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void showOnly(const QWidget& part, const QImage& image);
    void place();
    void makeCopyAction();
    [[nodiscard]] const QImage& scaledImage();

    QImage m_image;
    QImage m_scaled; ///< as large as it is shown; null until it is painted
    AnnotationCanvas* m_canvas;
    QAction* m_copy = nullptr;
    EmptyPanel* m_empty;
    ProgressIndicator* m_progress;
};

} // namespace stillwick
