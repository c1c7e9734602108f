// Panes whose borders can be moved. Main thread.
#pragma once

#include <QList>
#include <QSplitter>
#include <QSplitterHandle>

namespace stillwick {

/// The line between two panes: dragged, moved by the arrow keys, or brought back by a double click.
class SplitHandle final : public QSplitterHandle {
    Q_OBJECT

public:
    SplitHandle(Qt::Orientation orientation, QSplitter* parent);

    /// Where the line stands, in pixels from the view's edge, and between which bounds it may move.
    [[nodiscard]] int position() const;
    [[nodiscard]] QPair<int, int> bounds();
    void moveTo(int position);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};

/// Panes side by side or one above the other, in proportions that hold when the window grows. A new
/// view of the same name begins as the user left the last one, for as long as the program runs. No
/// pane can be closed.
class SplitView final : public QSplitter {
    Q_OBJECT

public:
    SplitView(Qt::Orientation orientation, const QString& name, QWidget* parent = nullptr);

    /// One part for each pane, in any unit.
    void setProportions(const QList<int>& parts);
    /// Back to what setProportions gave.
    void resetProportions();

protected:
    QSplitterHandle* createHandle() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void apply(const QList<int>& parts);
    void remember();

    QList<int> m_parts;        // as built
    QList<int> m_currentParts; // as the user left them
};

} // namespace stillwick
