#include "Interface/ColorPicker.h"

#include "Interface/Checkerboard.h"
#include "Interface/LabelledSlider.h"
#include "Interface/Labels.h"
#include "Interface/StylePainting.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QStyleOptionSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace stillwick {

namespace {

struct NamedColor {
    QRgb color;
    QStringView name;
};

constexpr std::array swatchColors{
    NamedColor{0xffffffff, u"Blanc"},  NamedColor{0xff8e8e93, u"Gris"},
    NamedColor{0xff000000, u"Noir"},   NamedColor{0xffa2704a, u"Brun"},
    NamedColor{0xffff0000, u"Rouge"},  NamedColor{0xffff9500, u"Orange"},
    NamedColor{0xffffcc00, u"Jaune"},  NamedColor{0xff34c759, u"Vert"},
    NamedColor{0xff30b0c7, u"Canard"}, NamedColor{0xff0a84ff, u"Bleu"},
    NamedColor{0xff8f5cf7, u"Violet"}, NamedColor{0xffff4fa0, u"Rose"},
};
constexpr int swatchColumns = 6;

QString percent(double part) {
    return QStringLiteral("%1 %").arg(std::lround(part * 100));
}

} // namespace

QString colorCode(const QColor& color) {
    QString code = color.name(QColor::HexRgb).toUpper();
    if (color.alpha() < 255)
        code += QStringLiteral("%1").arg(color.alpha(), 2, 16, QLatin1Char('0')).toUpper();
    return code;
}

QColor colorOfCode(QString code) {
    static const QRegularExpression form(
        QStringLiteral("^#?([0-9a-fA-F]{3,4}|[0-9a-fA-F]{6}|[0-9a-fA-F]{8})$"));
    const QRegularExpressionMatch match = form.match(code.trimmed());
    if (!match.hasMatch())
        return {};
    code = match.captured(1);
    if (code.size() <= 4) { // each digit stands for two
        QString full;
        for (const QChar digit : code)
            full += QString(2, digit);
        code = full;
    }
    const auto channel = [&code](int index) {
        return code.mid(2 * index, 2).toInt(nullptr, 16);
    };
    return {channel(0), channel(1), channel(2), code.size() == 8 ? channel(3) : 255};
}

void paintColorSample(QPainter& painter, const QRectF& rect, double radius, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(rect, radius, radius);
    painter.setClipPath(shape);
    if (color.alpha() < 255)
        paintCheckerboard(painter, rect, 5);
    painter.fillRect(rect, color);
    painter.restore();
}

ColorSlider::ColorSlider(QWidget* parent) : ContinuousSlider(parent) {
    setMinimumWidth(120);
}

void ColorSlider::setStops(const QList<QColor>& stops) {
    m_stops = stops;
    update();
}

void ColorSlider::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    constexpr double thickness = 12;
    const QRectF groove(2, (height() - thickness) / 2, width() - 4, thickness);
    QLinearGradient gradient(groove.topLeft(), groove.topRight());
    const auto last = double(std::max<qsizetype>(1, m_stops.size() - 1));
    for (qsizetype i = 0; i < m_stops.size(); ++i)
        gradient.setColorAt(double(i) / last, m_stops.at(i));
    QPainterPath shape;
    shape.addRoundedRect(groove, thickness / 2, thickness / 2);
    painter.save();
    painter.setClipPath(shape);
    paintCheckerboard(painter, groove, 4);
    painter.fillRect(groove, gradient);
    painter.restore();
    strokeRounded(painter, groove, thickness / 2, QColor(0, 0, 0, 40));

    const QRectF knob(handle);
    const double radius = knob.width() / 2;
    if (showsFocus(option))
        paintFocusRing(painter, knob.adjusted(-3, -3, 3, 3), radius + 3, palette());
    strokeRounded(painter, knob.adjusted(-0.5, -0.5, 0.5, 0.5), radius + 0.5, QColor(0, 0, 0, 110));
    strokeRounded(painter, knob.adjusted(0.5, 0.5, -0.5, -0.5), radius - 0.5, Qt::white, 3);
}

ColorSwatch::ColorSwatch(const QColor& color, const QString& name, QWidget* parent)
    : QPushButton(parent), m_color(color) {
    setAutoDefault(false);
    setToolTip(name);
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize ColorSwatch::sizeHint() const {
    return {30, 30};
}

void ColorSwatch::setCurrent(bool isCurrent) {
    m_isCurrent = isCurrent;
    setAccessibleDescription(isCurrent ? QStringLiteral("Couleur actuelle") : QString());
    update();
}

void ColorSwatch::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRectF sample = QRectF(rect()).adjusted(4, 4, -4, -4);
    paintColorSample(painter, sample, sample.width() / 2, m_color);
    strokeRounded(painter, sample, sample.width() / 2,
                  schemeOf(palette()) == ColorScheme::dark ? QColor(255, 255, 255, 60)
                                                           : QColor(0, 0, 0, 50));
    if (showsFocus(option))
        paintFocusRing(painter, QRectF(rect()), controlRadius, palette());
    else if (m_isCurrent)
        strokeRounded(painter, sample.adjusted(-3, -3, 3, 3), sample.width() / 2 + 3,
                      themeColor(ThemeColor::accent, palette()), 2);
}

ColorPicker::ColorPicker(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(makeSwatches());
    constexpr std::array<QStringView, channelCount> titles{u"Teinte", u"Saturation", u"Luminosité",
                                                           u"Opacité"};
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        auto* slider = new ColorSlider;
        auto* line = new LabelledSlider(titles.at(channel).toString(), slider);
        if (channel == hue) {
            slider->setBounds(0, 360);
            line->setValueText(
                [](double value) { return QStringLiteral("%1°").arg(std::lround(value)); });
        } else {
            line->setValueText(percent);
        }
        connect(line, &LabelledSlider::valueChosen, this, &ColorPicker::onSliderMoved);
        m_sliders.at(channel) = slider;
        column->addWidget(line);
    }
    column->addWidget(makeCodeLine());
    showColor();
}

QWidget* ColorPicker::makeSwatches() {
    auto* board = new QWidget;
    auto* grid = new QGridLayout(board);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(4);
    int index = 0;
    for (const NamedColor& named : swatchColors) {
        auto* swatch = new ColorSwatch(QColor::fromRgb(named.color), named.name.toString());
        connect(swatch, &QPushButton::clicked, this, [this, swatch] {
            QColor color = swatch->color();
            color.setAlpha(m_color.alpha());
            choose(color);
        });
        grid->addWidget(swatch, index / swatchColumns, index % swatchColumns);
        m_swatches.push_back(swatch);
        ++index;
    }
    return board;
}

QWidget* ColorPicker::makeCodeLine() {
    auto* line = new QWidget;
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    m_code = new QLineEdit;
    m_code->setAccessibleName(QStringLiteral("Code de la couleur"));
    m_code->setMaxLength(9);
    m_code->setFixedWidth(110);
    // Also where a screen reader sets it, which is no editing.
    connect(m_code, &QLineEdit::textChanged, this, &ColorPicker::onCodeEdited);
    connect(m_code, &QLineEdit::editingFinished, this, &ColorPicker::showColor);
    auto* label = makeLabel(QStringLiteral("Code"), TextStyle::caption);
    label->setBuddy(m_code);
    layout->addWidget(label);
    layout->addStretch();
    layout->addWidget(m_code);
    return line;
}

void ColorPicker::setColor(const QColor& color) {
    m_color = color.toRgb();
    showColor();
}

void ColorPicker::choose(const QColor& color) {
    m_color = color;
    showColor();
    emit colorChosen(m_color);
}

void ColorPicker::onCodeEdited(const QString& code) {
    const QColor color = colorOfCode(code);
    if (!color.isValid())
        return; // not yet
    const QString typed = m_code->text();
    const int cursor = m_code->cursorPosition();
    choose(color);
    showCode(typed); // what is being typed stays as it is
    m_code->setCursorPosition(cursor);
}

void ColorPicker::showCode(const QString& code) {
    const QSignalBlocker isOurs(m_code);
    m_code->setText(code);
}

void ColorPicker::onSliderMoved() {
    // From the sliders and not from the colour: grey has no hue, but its slider has.
    const auto value = [this](Channel channel) {
        return float(m_sliders.at(channel)->realValue());
    };
    const float turn = value(hue) >= 360 ? 0 : value(hue) / 360;
    m_color = QColor::fromHsvF(turn, value(saturation), value(brightness), value(opacity)).toRgb();
    showStops();
    showCode(colorCode(m_color));
    for (ColorSwatch* swatch : m_swatches)
        swatch->setCurrent(swatch->color().rgb() == m_color.rgb());
    emit colorChosen(m_color);
}

void ColorPicker::showColor() {
    float h = 0;
    float s = 0;
    float v = 0;
    float a = 0;
    m_color.getHsvF(&h, &s, &v, &a);
    if (h >= 0) // without a hue its slider stays where it is
        m_sliders.at(hue)->setRealValue(double(h) * 360);
    m_sliders.at(saturation)->setRealValue(double(s));
    m_sliders.at(brightness)->setRealValue(double(v));
    m_sliders.at(opacity)->setRealValue(double(a));
    for (ColorSlider* slider : m_sliders) {
        if (auto* line = qobject_cast<LabelledSlider*>(slider->parentWidget()))
            line->setValue(slider->realValue());
    }
    showCode(colorCode(m_color));
    for (ColorSwatch* swatch : m_swatches)
        swatch->setCurrent(swatch->color().rgb() == m_color.rgb());
    showStops();
}

void ColorPicker::showStops() {
    const auto value = [this](Channel channel) {
        return float(m_sliders.at(channel)->realValue());
    };
    const float turn = value(hue) >= 360 ? 0 : value(hue) / 360;
    QList<QColor> hues;
    constexpr int hueStops = 7;
    for (int i = 0; i < hueStops; ++i)
        hues.push_back(QColor::fromHsvF(float(i % (hueStops - 1)) / (hueStops - 1), 1, 1));
    m_sliders.at(hue)->setStops(hues);
    m_sliders.at(saturation)
        ->setStops({QColor::fromHsvF(turn, 0, value(brightness)),
                    QColor::fromHsvF(turn, 1, value(brightness))});
    m_sliders.at(brightness)->setStops({Qt::black, QColor::fromHsvF(turn, value(saturation), 1)});
    QColor opaque = m_color;
    opaque.setAlpha(255);
    QColor clear = m_color;
    clear.setAlpha(0);
    m_sliders.at(opacity)->setStops({clear, opaque});
}

} // namespace stillwick
