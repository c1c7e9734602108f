// One of a few, side by side. Main thread.
#pragma once

#include <QButtonGroup>
#include <QRadioButton>
#include <QStringView>
#include <QWidget>

namespace stillwick {

/// One of the choices; a radio button in all but its looks.
class Segment final : public QRadioButton {
    Q_OBJECT

public:
    Segment(QStringView symbol, const QString& name, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& position) const override;
};

/// Symbols of which one is chosen: by a press, by the arrow keys, by name for a screen reader.
class SegmentedPicker final : public QWidget {
    Q_OBJECT

public:
    /// `label` is not shown; a screen reader says it.
    explicit SegmentedPicker(const QString& label, QWidget* parent = nullptr);

    /// Adds a choice at the end; the first one added is chosen. `name` is its tool tip too.
    void addSegment(QStringView symbol, const QString& name);

    /// Counted from 0; −1 without segments.
    [[nodiscard]] int currentIndex() const { return m_group->checkedId(); }
    void setCurrentIndex(int index);

signals:
    /// The user chose another.
    void indexChosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QButtonGroup* m_group;
};

} // namespace stillwick
