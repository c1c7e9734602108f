// A small panel that points at what it belongs to. Main thread.
#pragma once

#include <QPointer>
#include <QWidget>

namespace stillwick {

/// Floats over the window of its anchor, next to it, with an arrow. Escape, or a press outside of
/// it, dismisses it and gives the focus back; Tab stays within. *Lifetime*: the anchor owns it.
class Popover final : public QWidget {
    Q_OBJECT

public:
    /// `title` is what a screen reader calls it.
    Popover(QWidget* anchor, const QString& title);
    ~Popover() override;
    Q_DISABLE_COPY_MOVE(Popover)

    /// Takes the widget over and shows it.
    void setContent(QWidget* content);
    void setTitle(const QString& title);

    [[nodiscard]] bool isOpen() const { return m_isOpen; }

    bool eventFilter(QObject* watched, QEvent* event) override;

    void open();
    void dismiss();
    void toggle();

signals:
    void openChanged(bool isOpen);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    [[nodiscard]] QList<QWidget*> focusableWidgets() const;
    [[nodiscard]] bool isOutside(const QWidget* widget) const;
    void place();

    QPointer<QWidget> m_anchor;
    QPointer<QWidget> m_focusBefore;
    bool m_isOpen = false;
    bool m_pointsUp = true;
    int m_arrowX = 0; // in own coordinates
};

} // namespace stillwick
