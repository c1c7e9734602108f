#include "Stillwick/GroupHeaderView.h"

#include "Interface/Buttons.h"
#include "Interface/Labels.h"
#include "Interface/Popover.h"
#include "Stillwick/AppState.h"
#include "Stillwick/CaptureLists.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace stillwick {

namespace {

constexpr int spacing = 6;
constexpr QSize editorSize{280, 120};

SymbolButton* borderless(QStringView symbol, const char* help) {
    return new SymbolButton(symbol, QString::fromUtf8(help), SymbolButton::Border::none);
}

} // namespace

GroupHeaderView::GroupHeaderView(AppState& state, const QUuid& group, QWidget* parent)
    : QWidget(parent), m_state(state), m_id(group) {
    build();
    connect(&state, &AppState::groupChanged, this, [this](const QUuid& id) {
        if (id == m_id)
            refresh();
    });
    connect(&state, &AppState::groupsChanged, this, &GroupHeaderView::refresh);
    connect(&state, &AppState::activeGroupIDChanged, this, &GroupHeaderView::refresh);
    refresh();
}

void GroupHeaderView::build() {
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(spacing, 0, spacing, 0);
    row->setSpacing(spacing);
    m_activate = borderless(u"circle", "Définir comme groupe actif");
    m_name = new QLineEdit;
    m_name->setFrame(false);
    m_name->setPlaceholderText(QStringLiteral("Nom du groupe"));
    m_name->setAccessibleName(QStringLiteral("Nom du groupe"));
    m_name->setAccessibleDescription(QStringLiteral("Nomme aussi le dossier exporté"));
    setTextStyle(m_name, TextStyle::subheadline);
    m_count = makeLabel({}, TextStyle::caption, ThemeColor::secondaryText);
    m_count->setAccessibleName(QStringLiteral("Nombre de captures"));
    m_notesButton = borderless(u"text.alignleft", "Description du groupe");
    m_delete = borderless(u"trash", "Supprimer le groupe");
    m_delete->setSymbol(u"trash", ThemeColor::destructive);
    row->addWidget(m_activate);
    row->addWidget(m_name, 1);
    row->addWidget(m_count);
    row->addWidget(m_notesButton);
    row->addWidget(m_delete);
    m_popover = new Popover(m_notesButton, QStringLiteral("Description du groupe"));
    m_popover->setContent(makeDescription());
    connect(m_activate, &QAbstractButton::clicked, this, [this] { m_state.setActiveGroup(m_id); });
    // Also where a screen reader sets it, which is no editing.
    connect(m_name, &QLineEdit::textChanged, this,
            [this](const QString& name) { m_state.setGroupName(name, m_id); });
    connect(m_notesButton, &QAbstractButton::clicked, m_popover, &Popover::toggle);
    // Later, for deleting the group deletes this header.
    connect(
        m_delete, &QAbstractButton::clicked, &m_state,
        [&state = m_state, id = m_id] { state.deleteGroup(id); }, Qt::QueuedConnection);
}

QWidget* GroupHeaderView::makeDescription() {
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    m_descriptionTitle = makeLabel({}, TextStyle::headline);
    m_notes = new QPlainTextEdit;
    m_notes->setFixedSize(editorSize);
    m_notes->setTabChangesFocus(true);
    m_notes->setAccessibleName(QStringLiteral("Description du groupe"));
    column->addWidget(m_descriptionTitle);
    column->addWidget(m_notes);
    column->addWidget(makeLabel(QStringLiteral("Exportée en Markdown avec le groupe."),
                                TextStyle::caption, ThemeColor::secondaryText));
    connect(m_notes, &QPlainTextEdit::textChanged, this,
            [this] { m_state.setGroupNotes(m_notes->toPlainText(), m_id); });
    return content;
}

const CaptureGroup* GroupHeaderView::group() const {
    return groupOf(m_state.groups(), m_id);
}

void GroupHeaderView::refresh() {
    const CaptureGroup* const shown = group();
    if (shown == nullptr)
        return;
    setAccessibleName(shown->name.isEmpty() ? QStringLiteral("Groupe sans nom")
                                            : QStringLiteral("Groupe « %1 »").arg(shown->name));
    const bool isActive = m_state.activeGroupID() == m_id;
    m_activate->setSymbol(isActive ? u"largecircle.fill.circle" : u"circle",
                          isActive ? ThemeColor::accent : ThemeColor::secondaryText);
    m_activate->setHelp(isActive ? QStringLiteral("Groupe actif (cible des captures)")
                                 : QStringLiteral("Définir comme groupe actif"));
    if (m_name->text() != shown->name) {
        const QSignalBlocker quiet(m_name);
        m_name->setText(shown->name);
    }
    m_count->setText(QString::number(shown->frames.size()));
    m_notesButton->setSymbol(shown->notes.isEmpty() ? u"text.alignleft" : u"text.badge.checkmark");
    m_descriptionTitle->setText(QStringLiteral("Description — ") + shown->name);
    if (m_notes->toPlainText() != shown->notes) {
        const QSignalBlocker quiet(m_notes);
        m_notes->setPlainText(shown->notes);
    }
    m_delete->setVisible(m_state.groups().size() > 1);
}

} // namespace stillwick
