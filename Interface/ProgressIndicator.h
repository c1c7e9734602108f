// Work is under way, nobody knows how long. Main thread.
#pragma once

#include <QTimer>
#include <QWidget>

class QPainter;

namespace stillwick {

/// Draws the spokes within the rectangle; `step` is which one leads, one further every
/// `progressInterval`.
void paintProgressIndicator(QPainter& painter, const QRectF& rect, int step,
                            const QPalette& palette);
inline constexpr int progressSpokes = 8;
inline constexpr int progressIntervalMilliseconds = 100;

/// Turns while it is visible.
class ProgressIndicator final : public QWidget {
    Q_OBJECT

public:
    explicit ProgressIndicator(QWidget* parent = nullptr, int side = 18);

    [[nodiscard]] QSize sizeHint() const override { return {m_side, m_side}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QTimer m_timer;
    int m_side;
    int m_step = 0;
};

} // namespace stillwick
