#include "Interface/TextStyle.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include <array>
#include <cstddef>

namespace stillwick {

namespace {

struct Measure {
    double scale; // of the application's font
    QFont::Weight weight;
};

/// One row per style, in the order of the enumeration.
constexpr std::array<Measure, 7> measures{{
    {1.35, QFont::DemiBold},
    {1.0, QFont::DemiBold},
    {1.0, QFont::Normal},
    {0.95, QFont::Normal},
    {0.95, QFont::Medium},
    {0.88, QFont::Normal},
    {0.82, QFont::Normal},
}};

class FontFollower final : public QObject {
public:
    FontFollower(QWidget* widget, TextStyle style) : QObject(widget), m_widget(widget) {
        setObjectName(QStringLiteral("textStyle"));
        setStyle(style);
        widget->installEventFilter(this);
    }

    void setStyle(TextStyle style) {
        m_style = style;
        apply();
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::ApplicationFontChange)
            apply();
        return false;
    }

private:
    void apply() { m_widget->setFont(styledFont(m_style)); }

    QWidget* m_widget;
    TextStyle m_style = TextStyle::body;
};

} // namespace

QFont styledFont(TextStyle style) {
    const Measure& measure = measures.at(static_cast<std::size_t>(style));
    QFont font = QApplication::font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * measure.scale);
    else
        font.setPixelSize(qRound(font.pixelSize() * measure.scale));
    font.setWeight(measure.weight);
    return font;
}

void setTextStyle(QWidget* widget, TextStyle style) {
    auto* follower = dynamic_cast<FontFollower*>(
        widget->findChild<QObject*>(QStringLiteral("textStyle"), Qt::FindDirectChildrenOnly));
    if (follower == nullptr)
        new FontFollower(widget, style); // the widget owns it
    else
        follower->setStyle(style);
}

} // namespace stillwick
