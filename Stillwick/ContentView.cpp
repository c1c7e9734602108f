#include "Stillwick/ContentView.h"

#include "Interface/Alert.h"
#include "Interface/Buttons.h"
#include "Interface/EmptyPanel.h"
#include "Interface/SplitView.h"
#include "Interface/Theme.h"
#include "Stillwick/AppState.h"
#include "Stillwick/CapturedFramesListView.h"
#include "Stillwick/EdgeControlsView.h"
#include "Stillwick/ExportPanelView.h"
#include "Stillwick/ExtractionPreviewView.h"
#include "Stillwick/TimelineControlsView.h"
#include "Stillwick/VideoArea.h"
#include "Stillwick/VideoPlayerView.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QMimeDatabase>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace stillwick {

namespace {

constexpr QSize leastCentre{460, 360};
constexpr int leastList = 260;
constexpr int leastRight = 320;
constexpr int leastPanelsHeight = 150;
constexpr int padding = 12;

QFrame* makeDivider() {
    auto* const line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    return line;
}

QWidget* padded(QWidget* content) {
    auto* const box = new QWidget;
    auto* const layout = new QVBoxLayout(box);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->addWidget(content);
    return box;
}

/// The names that films have, as the shared database of media types knows them.
QString movieNames() {
    QStringList patterns;
    const QMimeDatabase database;
    for (const QMimeType& type : database.allMimeTypes())
        if (type.name().startsWith(QStringLiteral("video/")))
            patterns += type.globPatterns();
    patterns.removeDuplicates();
    patterns.sort();
    return QStringLiteral("Vidéos (%1)").arg(patterns.join(u' '));
}

} // namespace

ContentView::ContentView(QWidget* parent)
    : QWidget(parent), m_state(std::make_unique<AppState>()),
      m_list(new CapturedFramesListView(*m_state)) {
    m_list->setMinimumWidth(leastList);
    auto* const split = new SplitView(Qt::Horizontal, QStringLiteral("window"));
    split->addWidget(makeCentre());
    split->addWidget(m_list);
    split->addWidget(makeRightColumn());
    split->setProportions({11, 5, 6});
    split->handle(1)->setAccessibleName(
        QStringLiteral("Séparateur entre la vidéo et les captures"));
    split->handle(2)->setAccessibleName(
        QStringLiteral("Séparateur entre les captures et l'aperçu"));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(split);
    connect(m_state.get(), &AppState::videoURLChanged, this, &ContentView::showVideo);
    connect(m_state.get(), &AppState::projectURLChanged, this, &ContentView::titleChanged);
    connect(m_state.get(), &AppState::durationChanged, this,
            [this] { m_player->setDuration(m_state->duration()); });
    connect(m_state.get(), &AppState::errorMessageChanged, this, &ContentView::showError);
    showVideo();
}

// The views refer to the state until they are gone.
ContentView::~ContentView() {
    qDeleteAll(findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
}

QWidget* ContentView::makeCentre() {
    auto* const area = new VideoArea([](const QList<QUrl>& urls) {
        return std::any_of(urls.begin(), urls.end(), &ContentView::isMovieFile);
    });
    m_pages = &area->pages();
    m_player = new VideoPlayerView;
    m_player->setPlayer(m_state->player());
    m_pages->addWidget(makePlaceholder());
    m_pages->addWidget(m_player);
    connect(area, &VideoArea::urlsDropped, this, &ContentView::handleDroppedURLs);
    auto* const centre = new QWidget;
    centre->setMinimumSize(leastCentre);
    auto* const column = new QVBoxLayout(centre);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(area, 1);
    m_timeline = new TimelineControlsView(*m_state);
    column->addWidget(m_timeline);
    return centre;
}

QWidget* ContentView::makePlaceholder() {
    auto* const panel =
        new EmptyPanel(u"film.stack", QStringLiteral("Aucune vidéo"),
                       QStringLiteral("Glissez une vidéo ici, ou ouvrez-en une (.mp4, .mov)."));
    // It stands on black, whatever the window's colours.
    panel->setPalette(themePalette(ColorScheme::dark));
    auto* const open = new ProminentButton(u"folder", QStringLiteral("Ouvrir une vidéo"),
                                           ProminentButton::Size::large);
    connect(open, &QAbstractButton::clicked, this, &ContentView::showImporter);
    panel->setAction(open);
    return panel;
}

QWidget* ContentView::makeRightColumn() {
    m_preview = new ExtractionPreviewView(*m_state);
    m_export = new ExportPanelView(*m_state);
    auto* const panels = new QWidget;
    auto* const column = new QVBoxLayout(panels);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(padding);
    column->addWidget(new EdgeControlsView(*m_state));
    column->addWidget(makeDivider());
    column->addWidget(m_export);
    column->addStretch();
    auto* const scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus); // its controls have it, and come into view with it
    scroll->setWidget(panels);
    scroll->setMinimumHeight(leastPanelsHeight);
    auto* const split = new SplitView(Qt::Vertical, QStringLiteral("right column"));
    split->addWidget(padded(m_preview)); // as high as its parts at the least: more than 240
    split->addWidget(scroll);
    split->setProportions({3, 2});
    split->handle(1)->setAccessibleName(
        QStringLiteral("Séparateur entre l'aperçu et les réglages"));
    split->setMinimumWidth(leastRight);
    return split;
}

void ContentView::showVideo() {
    // The player's own controls stay as long as they hold the focus: it does not begin there.
    const QWidget* const focus = window()->focusWidget();
    if (m_state->hasVideo() && (focus == nullptr || m_pages->isAncestorOf(focus)))
        m_timeline->setFocus();
    m_pages->setCurrentIndex(m_state->hasVideo() ? 1 : 0);
    emit titleChanged();
}

void ContentView::showError() {
    if (const auto message = m_state->errorMessage())
        openErrorAlert(this, *message, [this] { m_state->setErrorMessage(std::nullopt); });
}

QString ContentView::windowTitle() const {
    if (!m_state->projectURL().isEmpty())
        return QFileInfo(m_state->projectURL().toLocalFile()).completeBaseName();
    return m_state->hasVideo() ? m_state->videoName() : QStringLiteral("Stillwick");
}

void ContentView::showImporter() {
    auto* const dialog = new QFileDialog(this, QStringLiteral("Ouvrir une vidéo"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(movieNames());
    dialog->setOption(QFileDialog::HideNameFilterDetails); // there are dozens
    connect(dialog, &QFileDialog::accepted, this, [this, dialog] {
        const QList<QUrl> chosen = dialog->selectedUrls();
        if (!chosen.isEmpty())
            m_state->loadVideo(chosen.front());
    });
    dialog->open();
}

bool ContentView::handleDroppedURLs(const QList<QUrl>& urls) {
    const auto film = std::find_if(urls.begin(), urls.end(), &ContentView::isMovieFile);
    if (film == urls.end())
        return false;
    m_state->loadVideo(*film);
    return true;
}

bool ContentView::isMovieFile(const QUrl& url) {
    if (!url.isLocalFile())
        return false;
    const QMimeDatabase database;
    for (const QMimeType& type : database.mimeTypesForFileName(url.fileName().toLower()))
        if (type.name().startsWith(QStringLiteral("video/")))
            return true;
    return false;
}

} // namespace stillwick
