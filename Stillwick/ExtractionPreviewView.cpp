#include "Stillwick/ExtractionPreviewView.h"

#include "Interface/Buttons.h"
#include "Interface/ColorWell.h"
#include "Interface/ContinuousSlider.h"
#include "Interface/Labels.h"
#include "Interface/SegmentedPicker.h"
#include "Interface/TextStyle.h"
#include "Stillwick/AnnotationCanvas.h"
#include "Stillwick/AppState.h"
#include "Stillwick/BigPreview.h"
#include "Stillwick/CutoutMimeData.h"
#include "Stillwick/StylesStrip.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <utility>

namespace stillwick {

namespace {

constexpr int spacing = 8;
constexpr double firstWidth = 0.006;

} // namespace

ExtractionPreviewView::ExtractionPreviewView(AppState& state, QWidget* parent)
    : QWidget(parent), m_state(state), m_renders(state), m_preview(new BigPreview),
      m_strip(new StylesStrip) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(spacing);
    column->addWidget(new SymbolLabel(u"wand.and.stars", QStringLiteral("Aperçu")));
    column->addWidget(m_preview, 1);
    column->addWidget(makeToolbar());
    column->addWidget(m_strip);
    column->addWidget(makeNoteEditor());
    AnnotationCanvas& canvas = m_preview->canvas();
    canvas.setLineWidth(firstWidth);
    connect(&canvas, &AnnotationCanvas::annotationsEdited, this,
            [this](const QList<Annotation>& annotations) {
                m_state.setAnnotations(annotations, m_shown);
            });
    connect(&canvas, &AnnotationCanvas::selectionEdited, this,
            &ExtractionPreviewView::selectAnnotation);
    connect(m_preview, &BigPreview::copyRequested, this,
            [this] { QGuiApplication::clipboard()->setMimeData(makeMimeData()); });
    connect(m_preview, &BigPreview::dragRequested, this,
            [this] { m_preview->startDrag(makeMimeData()); });
    connect(m_strip, &StylesStrip::styleChosen, &state, &AppState::setSelectedFilter);
    connect(&m_renders, &RenderCache::rendersChanged, this, &ExtractionPreviewView::showRenders);
    connect(&state, &AppState::selectedFilterChanged, this, &ExtractionPreviewView::showRenders);
    connect(&state, &AppState::selectionChanged, this, &ExtractionPreviewView::refresh);
    connect(&state, &AppState::groupsChanged, this, &ExtractionPreviewView::refresh);
    connect(&state, &AppState::frameChanged, this, [this](const QUuid& id) {
        if (id == m_shown)
            refresh();
    });
    refresh();
}

QWidget* ExtractionPreviewView::makeToolbar() {
    constexpr double leastWidth = 0.002;
    constexpr double mostWidth = 0.02;
    constexpr int sliderWidth = 70;
    m_toolbar = new QWidget;
    auto* const row = new QHBoxLayout(m_toolbar);
    row->setContentsMargins({});
    row->setSpacing(spacing);
    m_tools = new SegmentedPicker(QStringLiteral("Outil"));
    for (const AnnotationTool tool : allAnnotationTools)
        m_tools->addSegment(systemImage(tool), displayName(tool));
    m_tools->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_color = new ColorWell(QStringLiteral("Couleur de l'annotation"));
    m_color->setColor(Qt::red);
    m_color->setToolTip(QStringLiteral("Couleur de l'annotation"));
    m_width = new ContinuousSlider;
    m_width->setBounds(leastWidth, mostWidth);
    m_width->setRealValue(firstWidth);
    m_width->setFixedWidth(sliderWidth);
    m_width->setToolTip(QStringLiteral("Épaisseur"));
    m_width->setAccessibleName(QStringLiteral("Épaisseur"));
    m_delete = new SymbolButton(u"trash", QStringLiteral("Supprimer l'annotation sélectionnée (⌫)"),
                                SymbolButton::Border::none);
    m_delete->setEnabled(false);
    row->addWidget(m_tools);
    row->addWidget(m_color);
    row->addWidget(m_width);
    row->addWidget(m_delete);
    row->addStretch();
    AnnotationCanvas& canvas = m_preview->canvas();
    connect(m_tools, &SegmentedPicker::indexChosen, this,
            [&canvas](int index) { canvas.setTool(allAnnotationTools.at(std::size_t(index))); });
    connect(m_color, &ColorWell::colorChosen, this,
            [&canvas](const QColor& color) { canvas.setColor(color); });
    connect(m_width, &ContinuousSlider::valueChosen, this,
            [&canvas](double width) { canvas.setLineWidth(width); });
    connect(m_delete, &QAbstractButton::clicked, this,
            &ExtractionPreviewView::deleteSelectedAnnotation);
    return m_toolbar;
}

QWidget* ExtractionPreviewView::makeNoteEditor() {
    constexpr int captionSpacing = 4;
    constexpr int editorHeight = 60;
    m_noteEditor = new QWidget;
    auto* const column = new QVBoxLayout(m_noteEditor);
    column->setContentsMargins({});
    column->setSpacing(captionSpacing);
    column->addWidget(makeLabel(QStringLiteral("Note de l'extrait"), TextStyle::caption,
                                ThemeColor::secondaryText));
    m_note = new QPlainTextEdit;
    m_note->setFixedHeight(editorHeight);
    m_note->setTabChangesFocus(true);
    m_note->setAccessibleName(QStringLiteral("Note de l'extrait"));
    setTextStyle(m_note, TextStyle::callout);
    column->addWidget(m_note);
    connect(m_note, &QPlainTextEdit::textChanged, this,
            [this] { m_state.setNote(m_note->toPlainText(), m_shown); });
    return m_noteEditor;
}

void ExtractionPreviewView::refresh() {
    showCapture();
    showRenders();
}

void ExtractionPreviewView::showCapture() {
    const auto frame = m_state.previewFrame();
    const QUuid id = frame ? frame->id() : QUuid();
    if (std::exchange(m_shown, id) != id) {
        m_preview->canvas().abandonDrag(); // what was being drawn was meant for the other
        selectAnnotation(std::nullopt);
    }
    m_preview->canvas().setAnnotations(frame ? frame->annotations : QList<Annotation>());
    const QString notes = frame ? frame->notes : QString();
    if (m_note->toPlainText() != notes) {
        const QSignalBlocker quiet(m_note);
        m_note->setPlainText(notes);
    }
    // Last, for what is hidden gives the keyboard away, and whatever takes it may change the state.
    // Disabled too, for in a window behind, what is only hidden keeps it.
    for (QWidget* const part : {m_toolbar, m_noteEditor}) {
        part->setEnabled(frame.has_value());
        part->setVisible(frame.has_value());
    }
}

void ExtractionPreviewView::showRenders() {
    using Content = StyleButton::Content;
    const auto frame = m_state.previewFrame();
    const bool hasSubject = frame && !frame->subjectPreview.isNull();
    const QImage image = m_renders.render(m_state.selectedFilter());
    if (!image.isNull())
        m_preview->showImage(image);
    else if (hasSubject)
        m_preview->showProgress();
    else
        m_preview->showNothing();
    for (const FilterStyle style : allFilterStyles) {
        const QImage small = m_renders.small(style);
        const Content otherwise = hasSubject ? Content::progress : Content::nothing;
        m_strip->button(style).setContent(small.isNull() ? otherwise : Content::picture, small);
    }
    m_strip->setCurrent(m_state.selectedFilter());
}

void ExtractionPreviewView::selectAnnotation(std::optional<QUuid> id) {
    m_preview->canvas().setSelectedID(id);
    m_delete->setEnabled(id.has_value());
}

QMimeData* ExtractionPreviewView::makeMimeData() const {
    const auto frame = m_state.previewFrame();
    if (!frame)
        return new QMimeData;
    return new CutoutMimeData(m_state.exportedPNG(*frame), m_state.exportedName(*frame));
}

void ExtractionPreviewView::deleteSelectedAnnotation() {
    const auto selected = m_preview->canvas().selectedID();
    if (!selected)
        return;
    QList<Annotation> annotations = m_preview->canvas().annotations();
    annotations.removeIf([&selected](const Annotation& each) { return each.id == *selected; });
    m_state.setAnnotations(annotations, m_shown);
    selectAnnotation(std::nullopt);
}

} // namespace stillwick
