#include "Invariants.h"

#include "Interface/SectionedListView.h"
#include "Stillwick/AnnotationCanvas.h"
#include "Stillwick/AppState.h"
#include "Stillwick/CaptureLists.h"
#include "Stillwick/ContentView.h"
#include "Stillwick/ExtractionPreviewView.h"
#include "Stillwick/StillwickWindow.h"

#include <QDirIterator>
#include <QPlainTextEdit>

#include <array>
#include <cmath>
#include <cstdio>

namespace stillwick::monkey {

namespace {

struct Rule {
    const char* text;
    bool (*holds)(const StillwickWindow&);
};

bool everyIdIsThereOnce(const StillwickWindow& window) {
    QSet<QUuid> ids;
    qsizetype count = 0;
    for (const CaptureGroup& group : window.state().groups()) {
        ids.insert(group.id());
        for (const CapturedFrame& frame : group.frames)
            ids.insert(frame.id());
        count += 1 + group.frames.size();
    }
    return ids.size() == count && !window.state().groups().isEmpty();
}

bool theActiveGroupIsThere(const StillwickWindow& window) {
    return groupOf(window.state().groups(), window.state().activeGroupID()) != nullptr;
}

bool theSelectionIsThere(const StillwickWindow& window) {
    for (const QUuid& id : window.state().selection())
        if (frameOf(window.state().groups(), id) == nullptr)
            return false;
    return true;
}

bool theListShowsTheGroups(const StillwickWindow& window) {
    const auto* const list = window.findChild<SectionedListView*>();
    const QList<CaptureGroup>& groups = window.state().groups();
    if (list->sections().size() != groups.size())
        return false;
    for (qsizetype i = 0; i < groups.size(); ++i) {
        const ListSection& section = list->sections().at(i);
        if (section.id != groups.at(i).id() || section.rows.size() != groups.at(i).frames.size())
            return false;
        for (qsizetype row = 0; row < section.rows.size(); ++row)
            if (section.rows.at(row) != groups.at(i).frames.at(row).id())
                return false;
    }
    return true;
}

bool theListShowsTheSelection(const StillwickWindow& window) {
    return window.findChild<SectionedListView*>()->selectedRows() == window.state().selection();
}

bool theEdgeSettingsAreInRange(const StillwickWindow& window) {
    const EdgeOptions& edge = window.state().edgeOptions();
    return edge.shrink >= 0 && edge.shrink <= 10 && edge.feather >= 0 && edge.feather <= 10 &&
           edge.outlineWidth >= 1 && edge.outlineWidth <= 20 && edge.outlineColor.isValid();
}

bool theExportIsWithinItsTotal(const StillwickWindow& window) {
    const ExportProgress& progress = window.state().progress();
    return progress.completed >= 0 && progress.completed <= progress.total;
}

bool theTimeIsATime(const StillwickWindow& window) {
    const double seconds = window.state().currentTime().safeSeconds();
    return std::isfinite(seconds) && seconds >= 0;
}

bool theCanvasShowsTheMarks(const StillwickWindow& window) {
    const auto frame = window.state().previewFrame();
    const auto& canvas = *window.findChild<AnnotationCanvas*>();
    const QList<Annotation> marks = frame ? frame->annotations : QList<Annotation>();
    return canvas.annotations() == marks;
}

bool theMarksAreFinite(const StillwickWindow& window) {
    for (const Annotation& mark : window.findChild<AnnotationCanvas*>()->annotations())
        if (!std::isfinite(mark.start.x() + mark.start.y() + mark.end.x() + mark.end.y()))
            return false;
    return true;
}

bool theNoteIsTheCaptures(const StillwickWindow& window) {
    const auto frame = window.state().previewFrame();
    const auto* const note = window.content().preview().findChild<QPlainTextEdit*>();
    const QString shown = note->toPlainText();
    const QString kept = frame ? frame->notes : QString();
    if (shown == kept)
        return true;
    std::fprintf(stderr, "the note shown: « %s », kept: %s\n", qPrintable(shown),
                 frame ? qPrintable(QStringLiteral("« %1 »").arg(kept))
                       : "none, for there is no capture");
    return false;
}

bool theTitleIsTheContents(const StillwickWindow& window) {
    return window.windowTitle() == window.content().windowTitle();
}

constexpr std::array rules{
    Rule{"every id is there once", everyIdIsThereOnce},
    Rule{"the active group is there", theActiveGroupIsThere},
    Rule{"the selection is there", theSelectionIsThere},
    Rule{"the list shows the groups", theListShowsTheGroups},
    Rule{"the list shows the selection", theListShowsTheSelection},
    Rule{"the edge settings are in range", theEdgeSettingsAreInRange},
    Rule{"the export is within its total", theExportIsWithinItsTotal},
    Rule{"the time is a time", theTimeIsATime},
    Rule{"the canvas shows the marks", theCanvasShowsTheMarks},
    Rule{"the marks are finite", theMarksAreFinite},
    Rule{"the note is the capture's", theNoteIsTheCaptures},
    Rule{"the title is the content's", theTitleIsTheContents},
};

} // namespace

QString brokenRule(const StillwickWindow& window) {
    for (const Rule& rule : rules)
        if (!rule.holds(window))
            return QString::fromUtf8(rule.text);
    return {};
}

QString strayFile(const QString& folder) {
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QString path = files.next();
        const QString suffix = QFileInfo(path).suffix();
        if (suffix != QStringLiteral("png") && suffix != QStringLiteral("md") &&
            suffix != QStringLiteral("stillwick"))
            return path;
    }
    return {};
}

} // namespace stillwick::monkey
