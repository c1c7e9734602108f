// The capture that is looked at: its cut-out, styles, marks and note. Main thread.
#pragma once

#include "Stillwick/RenderCache.h"

#include <QUuid>
#include <QWidget>

#include <optional>

class QMimeData;
class QPlainTextEdit;

namespace stillwick {

class AppState;
class BigPreview;
class ColorWell;
class ContinuousSlider;
class SegmentedPicker;
class StylesStrip;
class SymbolButton;

class ExtractionPreviewView final : public QWidget {
    Q_OBJECT

public:
    /// `state` outlives the view.
    explicit ExtractionPreviewView(AppState& state, QWidget* parent = nullptr);

    [[nodiscard]] BigPreview& bigPreview() const { return *m_preview; }
    [[nodiscard]] StylesStrip& stylesStrip() const { return *m_strip; }
    [[nodiscard]] const RenderCache& renders() const { return m_renders; }

private:
    QWidget* makeToolbar();
    QWidget* makeNoteEditor();
    void refresh();
    void showRenders();
    void showCapture();
    void selectAnnotation(std::optional<QUuid> id);
    void deleteSelectedAnnotation();
    /// The capture that is shown, for other programs.
    [[nodiscard]] QMimeData* makeMimeData() const;

    AppState& m_state;
    RenderCache m_renders;
    BigPreview* m_preview;
    QWidget* m_toolbar = nullptr;
    SegmentedPicker* m_tools = nullptr;
    ColorWell* m_color = nullptr;
    ContinuousSlider* m_width = nullptr;
    SymbolButton* m_delete = nullptr;
    StylesStrip* m_strip;
    QWidget* m_noteEditor = nullptr;
    QPlainTextEdit* m_note = nullptr;
    QUuid m_shown; ///< the capture
};

} // namespace stillwick
