#include "Stillwick/EdgeControlsView.h"

#include "Interface/ColorWell.h"
#include "Interface/DisclosureGroup.h"
#include "Interface/LabelledSlider.h"
#include "Interface/Labels.h"
#include "Interface/Switch.h"
#include "Stillwick/AppState.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace stillwick {

EdgeControlsView::EdgeControlsView(AppState& state, QWidget* parent)
    : QWidget(parent), m_state(state),
      m_group(new DisclosureGroup(u"scribble.variable", QStringLiteral("Contours"), this)) {
    constexpr double mostPixels = 10;
    constexpr double leastOutline = 1;
    constexpr double mostOutline = 20;
    constexpr int rowSpacing = 10;
    constexpr int topPadding = 6;
    m_shrink = makeSlider("Affiner les bords", 0, mostPixels,
                          "Réduit le liseré résiduel au bord du détourage", &EdgeOptions::shrink);
    m_feather = makeSlider("Adoucir", 0, mostPixels, "Lisse les bords durs du découpage",
                           &EdgeOptions::feather);
    m_outline = new Switch(QStringLiteral("Contour sticker"));
    connect(m_outline, &QAbstractButton::toggled, this, [this](bool isOn) {
        change([isOn](EdgeOptions& options) { options.outline = isOn; });
    });
    m_outlineWidth = makeSlider("Largeur", leastOutline, mostOutline, "Épaisseur de la bordure",
                                &EdgeOptions::outlineWidth);
    m_colorRow = makeColorRow();

    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(0, topPadding, 0, 0);
    column->setSpacing(rowSpacing);
    for (QWidget* const row : std::initializer_list<QWidget*>{m_shrink, m_feather, m_outline,
                                                              m_outlineWidth, m_colorRow})
        column->addWidget(row);
    m_group->setContent(content);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_group);
    connect(&state, &AppState::edgeOptionsChanged, this, &EdgeControlsView::showOptions);
    showOptions();
}

LabelledSlider* EdgeControlsView::makeSlider(const char* title, double least, double greatest,
                                             const char* help, double EdgeOptions::*field) {
    auto* const slider =
        new LabelledSlider(QString::fromUtf8(title), least, greatest, QString::fromUtf8(help));
    connect(slider, &LabelledSlider::valueChosen, this, [this, field](double value) {
        change([field, value](EdgeOptions& options) { options.*field = value; });
    });
    return slider;
}

QWidget* EdgeControlsView::makeColorRow() {
    auto* const row = new QWidget;
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    m_color = new ColorWell(QStringLiteral("Couleur"), row);
    layout->addWidget(makeLabel(QStringLiteral("Couleur"), TextStyle::body));
    layout->addStretch();
    layout->addWidget(m_color);
    connect(m_color, &ColorWell::colorChosen, this, [this](const QColor& color) {
        change([color](EdgeOptions& options) { options.outlineColor = color; });
    });
    return row;
}

void EdgeControlsView::change(const std::function<void(EdgeOptions&)>& change) {
    EdgeOptions options = m_state.edgeOptions();
    change(options);
    m_state.setEdgeOptions(options);
}

void EdgeControlsView::showOptions() {
    const EdgeOptions& options = m_state.edgeOptions();
    m_shrink->setValue(options.shrink);
    m_feather->setValue(options.feather);
    m_outline->setChecked(options.outline);
    m_outlineWidth->setValue(options.outlineWidth);
    m_color->setColor(options.outlineColor);
    m_outlineWidth->setVisible(options.outline);
    m_colorRow->setVisible(options.outline);
}

} // namespace stillwick
