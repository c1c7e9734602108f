// How widgets are drawn. Main thread.
#pragma once

#include <QProxyStyle>

class QStyleOptionButton;
class QStyleOptionSlider;

namespace stillwick {

/// Flat controls with small radii in the colours of the theme; what it does not draw is Fusion's. A
/// click into a slider's groove moves the handle there. The focus is framed once the keyboard is
/// used.
class InterfaceStyle final : public QProxyStyle {
    Q_OBJECT

public:
    InterfaceStyle();

    void polish(QWidget* widget) override;
    using QProxyStyle::polish;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                         SubControl subControl, const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                       const QWidget* widget) const override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QRect sliderPart(const QStyleOptionSlider& option, SubControl part,
                                   const QWidget* widget) const;
    [[nodiscard]] QRect scrollBarPart(const QStyleOptionSlider& option, SubControl part) const;
    void drawPushButtonLabel(const QStyleOptionButton& option, QPainter& painter,
                             const QWidget* widget) const;
    bool drawPanel(PrimitiveElement element, const QStyleOption& option, QPainter& painter,
                   const QWidget* widget) const;
};

} // namespace stillwick
