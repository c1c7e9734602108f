#include "Stillwick/CapturedFramesListView.h"

#include "Interface/Buttons.h"
#include "Interface/EmptyPanel.h"
#include "Interface/Labels.h"
#include "Interface/SectionedListView.h"
#include "Stillwick/AppState.h"
#include "Stillwick/CaptureLists.h"
#include "Stillwick/GroupHeaderView.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace stillwick {

namespace {

constexpr int padding = 10;
constexpr int subjectPadding = 2;

ThumbnailBox pictureBox(const CapturedFrame& frame) {
    ThumbnailBox box;
    box.content =
        frame.thumbnail.isNull() ? ThumbnailBox::Content::progress : ThumbnailBox::Content::picture;
    // A grab that failed has ended, too.
    if (frame.thumbnail.isNull() && frame.subjectExtracted)
        box.content = ThumbnailBox::Content::nothing;
    box.picture = frame.thumbnail.small();
    return box;
}

ThumbnailBox subjectBox(const CapturedFrame& frame) {
    ThumbnailBox box;
    box.isOnCheckerboard = true;
    box.padding = subjectPadding;
    box.picture = frame.subjectPreview.small();
    if (!frame.subjectPreview.isNull())
        box.content = ThumbnailBox::Content::picture;
    else if (!frame.subjectExtracted)
        box.content = ThumbnailBox::Content::progress;
    else {
        box.content = ThumbnailBox::Content::symbol;
        box.symbol = QStringLiteral("person.slash");
    }
    return box;
}

QString spokenState(const CapturedFrame& frame) {
    if (!frame.subjectExtracted)
        return QStringLiteral("détourage en cours");
    return frame.subjectPreview.isNull() ? QStringLiteral("aucun sujet")
                                         : QStringLiteral("sujet détouré");
}

} // namespace

CapturedFramesListView::CapturedFramesListView(AppState& state, QWidget* parent)
    : QWidget(parent), m_state(state) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(makeHeader());
    m_pages = new QStackedWidget;
    m_pages->addWidget(
        new EmptyPanel(u"photo.on.rectangle", QStringLiteral("Aucune image"),
                       QStringLiteral("Naviguez dans la vidéo puis appuyez sur C pour capturer.")));
    m_list =
        new SectionedListView([this](const QUuid& id) { return rowFor(id); },
                              [this](const QUuid& id) { return new GroupHeaderView(m_state, id); });
    m_list->setAccessibleName(QStringLiteral("Images capturées"));
    m_pages->addWidget(m_list);
    column->addWidget(m_pages, 1);
    connect(m_list, &SectionedListView::selectionChosen, &state, &AppState::setSelection);
    connect(m_list, &SectionedListView::moveRequested, this,
            [this](const QUuid& group, const QList<int>& offsets, int destination) {
                m_state.moveFrames(group, QSet<int>(offsets.begin(), offsets.end()), destination);
            });
    connect(m_list, &SectionedListView::menuRequested, this, &CapturedFramesListView::fillMenu);
    connect(&state, &AppState::groupsChanged, this, &CapturedFramesListView::showGroups);
    connect(&state, &AppState::frameChanged, m_list, &SectionedListView::announceRow);
    connect(&state, &AppState::selectionChanged, this, [this] {
        m_list->setSelectedRows(m_state.selection());
        if (m_state.selection().size() == 1)
            m_list->scrollToRow(*m_state.selection().begin());
    });
    showGroups();
}

QWidget* CapturedFramesListView::makeHeader() {
    auto* const header = new QWidget;
    auto* const row = new QHBoxLayout(header);
    row->setContentsMargins(padding, padding, padding, padding);
    row->addWidget(new SymbolLabel(u"photo.stack", QStringLiteral("Images capturées")));
    row->addStretch();
    m_count = makeLabel({}, TextStyle::callout, ThemeColor::secondaryText);
    m_count->setAccessibleName(QStringLiteral("Nombre d'images"));
    row->addWidget(m_count);
    auto* const add = new SymbolButton(u"folder.badge.plus", QStringLiteral("Nouveau groupe"),
                                       SymbolButton::Border::none);
    connect(add, &QAbstractButton::clicked, &m_state, &AppState::addGroup);
    row->addWidget(add);
    return header;
}

void CapturedFramesListView::showGroups() {
    QList<ListSection> sections;
    for (const CaptureGroup& group : m_state.groups()) {
        ListSection section{group.id(), {}};
        section.rows.reserve(group.frames.size());
        for (const CapturedFrame& frame : group.frames)
            section.rows.append(frame.id());
        sections.append(section);
    }
    m_list->setSections(sections);
    m_list->setSelectedRows(m_state.selection());
    const int count = m_state.frameCount();
    m_count->setText(QString::number(count));
    m_pages->setCurrentIndex(count > 0 ? 1 : 0);
}

ListRow CapturedFramesListView::rowFor(const QUuid& id) const {
    const CapturedFrame* const frame = frameOf(m_state.groups(), id);
    if (frame == nullptr)
        return {};
    ListRow row;
    row.boxes = {pictureBox(*frame), subjectBox(*frame)};
    row.symbolBetween = QStringLiteral("arrow.right");
    row.text = frame->time().displayString();
    row.accessibleText = row.text + QStringLiteral(", ") + spokenState(*frame);
    return row;
}

void CapturedFramesListView::fillMenu(const QUuid& id, QMenu* menu) {
    QMenu* const move = menu->addMenu(QStringLiteral("Déplacer vers"));
    for (const CaptureGroup& group : m_state.groups()) {
        if (std::any_of(group.frames.begin(), group.frames.end(),
                        [&id](const CapturedFrame& frame) { return frame.id() == id; }))
            continue;
        // A name is no place for a mnemonic.
        QString name = group.name.isEmpty() ? QStringLiteral("Sans nom") : group.name;
        name.replace(u'&', QStringLiteral("&&"));
        connect(move->addAction(name), &QAction::triggered, &m_state,
                [&state = m_state, id, target = group.id()] { state.moveFrame(id, target); });
    }
    connect(menu->addAction(QStringLiteral("Supprimer")), &QAction::triggered, &m_state,
            [&state = m_state, id] { state.deleteFrame(id); });
}

} // namespace stillwick
