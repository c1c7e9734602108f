#include "Stillwick/ExportPanelView.h"

#include "Interface/Alert.h"
#include "Interface/Buttons.h"
#include "Interface/Labels.h"
#include "Interface/Switch.h"
#include "Stillwick/AppState.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace stillwick {

namespace {

constexpr int spacing = 8;
constexpr int failureSpacing = 4;
constexpr int mostFailureHeight = 120;

QHBoxLayout* rowIn(QWidget* widget) {
    auto* const layout = new QHBoxLayout(widget);
    layout->setContentsMargins({});
    layout->setSpacing(spacing);
    return layout;
}

} // namespace

ExportPanelView::ExportPanelView(AppState& state, QWidget* parent)
    : QWidget(parent), m_state(state) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(spacing);
    column->addWidget(new SymbolLabel(u"square.and.arrow.up", QStringLiteral("Export")));
    column->addWidget(makeFolderRow());
    m_crop = new Switch(QStringLiteral("Recadrer sur le sujet"));
    m_crop->setToolTip(QStringLiteral("Rogne le PNG exporté au plus près du sujet détouré"));
    connect(m_crop, &QAbstractButton::toggled, &state, &AppState::setCropToSubject);
    column->addWidget(m_crop);
    m_filter = makeLabel({}, TextStyle::body);
    column->addWidget(m_filter);
    column->addWidget(makeButtons());
    m_hint = makeLabel(QStringLiteral("Choisissez un dossier de sortie pour exporter."),
                       TextStyle::caption, ThemeColor::secondaryText);
    m_hint->setWordWrap(true);
    column->addWidget(m_hint);
    m_progressRow = new QWidget;
    auto* const progress = rowIn(m_progressRow);
    m_progress = new QProgressBar;
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(QStringLiteral("Progression de l'export"));
    m_progressText = makeLabel({}, TextStyle::caption, ThemeColor::secondaryText);
    progress->addWidget(m_progress, 1);
    progress->addWidget(m_progressText);
    column->addWidget(m_progressRow);
    column->addWidget(makeFailures());
    connect(&state, &AppState::outputFolderChanged, this, &ExportPanelView::showFolder);
    connect(&state, &AppState::cropToSubjectChanged, this,
            [this] { m_crop->setChecked(m_state.cropToSubject()); });
    connect(&state, &AppState::selectedFilterChanged, this, &ExportPanelView::showFilter);
    connect(&state, &AppState::groupsChanged, this, &ExportPanelView::showEnablement);
    connect(&state, &AppState::progressChanged, this, &ExportPanelView::showProgress);
    connect(&state, &AppState::failuresChanged, this, &ExportPanelView::showFailures);
    connect(&state, &AppState::exportFinishedFolderChanged, this, &ExportPanelView::announceEnd);
    m_crop->setChecked(state.cropToSubject());
    showFolder();
    showFilter();
    showProgress();
    showFailures();
}

QWidget* ExportPanelView::makeFolderRow() {
    auto* const row = new QWidget;
    auto* const layout = rowIn(row);
    m_folder = new ElidedLabel;
    m_folder->setAccessibleName(QStringLiteral("Dossier de sortie"));
    auto* const choose = makeLabelledButton(u"folder", QStringLiteral("Dossier…"));
    connect(choose, &QAbstractButton::clicked, this, &ExportPanelView::chooseFolder);
    layout->addWidget(m_folder, 1);
    layout->addWidget(choose);
    return row;
}

QWidget* ExportPanelView::makeButtons() {
    auto* const row = new QWidget;
    auto* const layout = rowIn(row);
    m_perSubject = makeLabelledButton(u"square.on.square", QStringLiteral("Par sujet (⇧⌘E)"));
    m_merged = makeLabelledButton(u"square.and.arrow.down", QStringLiteral("Fusionné (⌘E)"));
    connect(m_perSubject, &QAbstractButton::clicked, this,
            [this] { m_state.runExport(ExportMode::perSubject); });
    connect(m_merged, &QAbstractButton::clicked, this,
            [this] { m_state.runExport(ExportMode::merged); });
    layout->addWidget(m_perSubject, 1);
    layout->addWidget(m_merged, 1);
    return row;
}

QWidget* ExportPanelView::makeFailures() {
    m_failures = new QWidget;
    auto* const column = new QVBoxLayout(m_failures);
    column->setContentsMargins({});
    column->setSpacing(failureSpacing);
    auto* const header = new QWidget;
    auto* const line = rowIn(header);
    constexpr int symbolSide = 16;
    line->addWidget(
        new SymbolView(u"exclamationmark.triangle.fill", symbolSide, ThemeColor::warning));
    m_failureCount = makeLabel({}, TextStyle::subheadline, ThemeColor::warning);
    line->addWidget(m_failureCount);
    line->addStretch();
    m_failureScroll = new QScrollArea;
    m_failureScroll->setFrameShape(QFrame::NoFrame);
    m_failureScroll->setWidgetResizable(true);
    m_failureScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_failureScroll->setAccessibleName(QStringLiteral("Échecs de l'export"));
    column->addWidget(header);
    column->addWidget(m_failureScroll);
    return m_failures;
}

bool ExportPanelView::canExport() const {
    return m_state.frameCount() > 0 && !m_state.outputFolder().isEmpty() &&
           !m_state.progress().isRunning;
}

QString ExportPanelView::exportSummary() const {
    const int failed = int(m_state.failures().size());
    const int done = std::max(m_state.progress().completed - failed, 0);
    if (failed == 0)
        return QStringLiteral("%1 image(s) exportée(s).").arg(done);
    return QStringLiteral("%1 image(s) exportée(s), %2 échec(s).").arg(done).arg(failed);
}

void ExportPanelView::chooseFolder() {
    auto* const dialog =
        new QFileDialog(this, QStringLiteral("Sélectionnez le dossier de sortie des PNG"),
                        m_state.outputFolder().toLocalFile());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Choisir"));
    connect(dialog, &QFileDialog::accepted, this, [this, dialog] {
        const QList<QUrl> chosen = dialog->selectedUrls();
        if (!chosen.isEmpty())
            m_state.setOutputFolder(chosen.front());
    });
    dialog->open();
}

void ExportPanelView::showFolder() {
    const QString path = m_state.outputFolder().toLocalFile();
    m_folder->setText(path.isEmpty() ? QStringLiteral("Aucun dossier") : QDir(path).dirName());
    setTextColor(m_folder, path.isEmpty() ? ThemeColor::secondaryText : ThemeColor::text);
    m_hint->setVisible(path.isEmpty());
    showEnablement();
}

void ExportPanelView::showFilter() {
    m_filter->setText(QStringLiteral("Filtre : ") + displayName(m_state.selectedFilter()));
}

void ExportPanelView::showProgress() {
    const ExportProgress& progress = m_state.progress();
    m_progressRow->setVisible(progress.isRunning);
    m_progress->setRange(0, std::max(progress.total, 1));
    m_progress->setValue(progress.completed);
    m_progressText->setText(QStringLiteral("%1 / %2").arg(progress.completed).arg(progress.total));
    showEnablement();
}

void ExportPanelView::showFailures() {
    const QList<ExportFailure>& failures = m_state.failures();
    m_failures->setVisible(!failures.isEmpty());
    m_failureCount->setText(QStringLiteral("%1 échec(s)").arg(failures.size()));
    auto* const rows = new QWidget;
    auto* const column = new QVBoxLayout(rows);
    column->setContentsMargins({});
    column->setSpacing(failureSpacing);
    for (const ExportFailure& failure : failures) {
        auto* const row = makeLabel(failure.timestamp + QStringLiteral(" — ") + failure.message,
                                    TextStyle::caption);
        row->setWordWrap(true);
        column->addWidget(row);
    }
    column->addStretch();
    m_failureScroll->setWidget(rows);
    m_failureScroll->setFixedHeight(std::min(rows->sizeHint().height(), mostFailureHeight));
}

void ExportPanelView::showEnablement() {
    m_perSubject->setEnabled(canExport());
    m_merged->setEnabled(canExport());
}

void ExportPanelView::announceEnd() {
    if (m_state.exportFinishedFolder().isEmpty())
        return;
    openAlert(this, QStringLiteral("Export terminé"), exportSummary(),
              QStringLiteral("Ouvrir le dossier"), [this] { m_state.openExportFolder(); });
}

} // namespace stillwick
