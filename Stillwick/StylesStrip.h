// The styles side by side. Main thread.
#pragma once

#include "Stillwick/FilterStyle.h"

#include <QAbstractButton>
#include <QImage>
#include <QList>
#include <QWidget>

namespace stillwick {

/// A style's small picture over its name; pressed, it chooses the style.
class StyleButton final : public QAbstractButton {
    Q_OBJECT

public:
    enum class Content { nothing, progress, picture };

    explicit StyleButton(FilterStyle style, QWidget* parent = nullptr);

    [[nodiscard]] FilterStyle style() const noexcept { return m_style; }
    /// `image` is a small one: it is scaled with every painting.
    void setContent(Content content, const QImage& image = {});
    [[nodiscard]] Content content() const noexcept { return m_content; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    FilterStyle m_style;
    Content m_content = Content::nothing;
    QImage m_image;
    int m_step = 0;
    int m_timer = 0;
};

class StylesStrip final : public QWidget {
    Q_OBJECT

public:
    explicit StylesStrip(QWidget* parent = nullptr);

    void setCurrent(FilterStyle style);
    [[nodiscard]] StyleButton& button(FilterStyle style) const;

signals:
    void styleChosen(FilterStyle style);

private:
    QList<StyleButton*> m_buttons;
};

} // namespace stillwick
