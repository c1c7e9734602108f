#include "Stillwick/StillwickWindow.h"

#include "Interface/Labels.h"
#include "Interface/Symbol.h"
#include "Stillwick/AppState.h"
#include "Stillwick/AppStateFocus.h"
#include "Stillwick/ContentView.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include <algorithm>

namespace stillwick {

namespace {

constexpr QSize firstSize{1280, 800};
const QString projectSuffix = QStringLiteral("stillwick");
const QString projectFilter = QStringLiteral("Projets Stillwick (*.stillwick)");

/// A file dialog that goes when it is closed.
QFileDialog* dialogOver(QWidget* window, const QString& title) {
    auto* const dialog = new QFileDialog(window, title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setNameFilter(projectFilter);
    dialog->setDefaultSuffix(projectSuffix);
    return dialog;
}

QWidget* makeSpacer() {
    auto* const spacer = new QWidget;
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    return spacer;
}

} // namespace

StillwickWindow::StillwickWindow() : m_content(new ContentView) {
    setAttribute(Qt::WA_DeleteOnClose);
    setCentralWidget(m_content);
    makeMenus();
    makeToolbar();
    resize(firstSize);
    connect(m_content, &ContentView::titleChanged, this, &StillwickWindow::showTitle);
    showTitle();
    new WindowFocusReporter(state(), *this);
}

StillwickWindow::~StillwickWindow() = default;

AppState& StillwickWindow::state() const {
    return m_content->state();
}

StillwickWindow* StillwickWindow::openNew() {
    auto* const window = new StillwickWindow;
    window->show();
    return window;
}

void StillwickWindow::openFile(const QString& path) {
    const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (QFileInfo(path).suffix().compare(projectSuffix, Qt::CaseInsensitive) == 0)
        state().openProject(url);
    else
        state().loadVideo(url);
}

void StillwickWindow::makeMenus() {
    makeFileMenu();
    makeVideoMenu();
}

void StillwickWindow::makeFileMenu() {
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&Fichier"));
    const auto add = [&](const char* label, const QKeySequence& keys, auto action) {
        connect(menu->addAction(QString::fromUtf8(label), keys), &QAction::triggered, this, action);
    };
    add("Nouveau projet", Qt::CTRL | Qt::Key_N, [] { StillwickWindow::openNew(); });
    add("Ouvrir un projet…", Qt::CTRL | Qt::Key_O, [this] { openProject(); });
    menu->addSeparator();
    add("Enregistrer", Qt::CTRL | Qt::Key_S, [this] { save(); });
    add("Enregistrer sous…", Qt::CTRL | Qt::SHIFT | Qt::Key_S, [this] { saveAs(); });
    menu->addSeparator();
    add("Export fusionné", Qt::CTRL | Qt::Key_E, [this] { state().runExport(ExportMode::merged); });
    add("Export par sujet", Qt::CTRL | Qt::SHIFT | Qt::Key_E,
        [this] { state().runExport(ExportMode::perSubject); });
    menu->addSeparator();
    add("Fermer la fenêtre", Qt::CTRL | Qt::Key_W, [this] { close(); });
}

void StillwickWindow::makeVideoMenu() {
    QMenu* const menu = menuBar()->addMenu(QStringLiteral("&Vidéo"));
    m_playPause = menu->addAction(QString());
    connect(m_playPause, &QAction::triggered, &state(), &AppState::togglePlayPause);
    const auto showPlaying = [this] {
        m_playPause->setText(state().isPlaying() ? QStringLiteral("Pause (Espace)")
                                                 : QStringLiteral("Lecture (Espace)"));
    };
    connect(&state(), &AppState::isPlayingChanged, this, showPlaying);
    showPlaying();
    menu->addSeparator();
    const auto add = [&](const char* label, const QKeySequence& keys, auto action) {
        connect(menu->addAction(QString::fromUtf8(label), keys), &QAction::triggered, this, action);
    };
    add("Image précédente", Qt::Key_Left, [this] { state().stepFrame(-1); });
    add("Image suivante", Qt::Key_Right, [this] { state().stepFrame(1); });
    add("Reculer (intervalle)", Qt::SHIFT | Qt::Key_Left, [this] { state().stepInterval(false); });
    add("Avancer (intervalle)", Qt::SHIFT | Qt::Key_Right, [this] { state().stepInterval(true); });
    add("Capturer l'image", Qt::Key_C, [this] { state().captureCurrentFrame(); });
}

void StillwickWindow::makeToolbar() {
    auto* const bar = addToolBar(QStringLiteral("Barre d'outils"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    constexpr int margin = 8; // in line with the menus above
    auto* const before = new QWidget;
    before->setFixedWidth(margin);
    bar->addWidget(before);
    QAction* const open = bar->addAction(symbolIcon(u"film"), QStringLiteral("Ouvrir une vidéo"));
    bar->widgetForAction(open)->setToolTip({}); // it says no more than the button
    connect(open, &QAction::triggered, m_content, &ContentView::showImporter);
    m_videoName = new ElidedLabel;
    setTextColor(m_videoName, ThemeColor::secondaryText);
    m_videoName->setAccessibleName(QStringLiteral("Vidéo ouverte"));
    bar->addWidget(makeSpacer());
    bar->addWidget(m_videoName);
    bar->addWidget(makeSpacer());
    auto* const counterweight = new QWidget; // the name stands in the middle of the window
    counterweight->setFixedWidth(bar->widgetForAction(open)->sizeHint().width() + margin);
    bar->addWidget(counterweight);
}

void StillwickWindow::showTitle() {
    setWindowTitle(m_content->windowTitle());
    m_videoName->setText(state().hasVideo() ? state().videoName() : QString());
}

void StillwickWindow::openProject() {
    QFileDialog* const dialog = dialogOver(this, QStringLiteral("Ouvrir un projet"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::accepted, this, [this, dialog] {
        if (!dialog->selectedUrls().isEmpty())
            state().openProject(dialog->selectedUrls().front());
    });
    dialog->open();
}

void StillwickWindow::save() {
    if (state().projectURL().isEmpty())
        saveAs();
    else
        state().saveProject(state().projectURL());
}

void StillwickWindow::saveAs() {
    QFileDialog* const dialog = dialogOver(this, QStringLiteral("Enregistrer le projet"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->selectFile(state().videoName() + u'.' + projectSuffix);
    connect(dialog, &QFileDialog::accepted, this, [this, dialog] {
        if (!dialog->selectedUrls().isEmpty())
            state().saveProject(dialog->selectedUrls().front());
    });
    dialog->open();
}

} // namespace stillwick
