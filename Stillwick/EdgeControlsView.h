// The controls for the border of cut-outs. Main thread.
#pragma once

#include "Stillwick/EdgeOptions.h"

#include <QWidget>

#include <functional>

namespace stillwick {

class AppState;
class ColorWell;
class DisclosureGroup;
class LabelledSlider;
class Switch;

class EdgeControlsView final : public QWidget {
    Q_OBJECT

public:
    /// `state` outlives the view.
    explicit EdgeControlsView(AppState& state, QWidget* parent = nullptr);

private:
    LabelledSlider* makeSlider(const char* title, double least, double greatest, const char* help,
                               double EdgeOptions::*field);
    QWidget* makeColorRow();
    void change(const std::function<void(EdgeOptions&)>& change);
    void showOptions();

    AppState& m_state;
    DisclosureGroup* m_group;
    LabelledSlider* m_shrink = nullptr;
    LabelledSlider* m_feather = nullptr;
    Switch* m_outline = nullptr;
    LabelledSlider* m_outlineWidth = nullptr;
    QWidget* m_colorRow = nullptr;
    ColorWell* m_color = nullptr;
};

} // namespace stillwick
