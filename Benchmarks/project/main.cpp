// bench-project [--captures N] [--rounds N] [--json FILE]: saving and opening large projects,
// beside Qt's reader and writer of JSON, which leave a tree and not yet a project.
#include "../DiskFloor.h"
#include "../Options.h"
#include "../Report.h"
#include "../Timings.h"

#include "Stillwick/ProjectJson.h"
#include "Stillwick/ProjectStore.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QUrl>

#include <algorithm>
#include <stdexcept>
#include <vector>

using namespace stillwick;
using namespace stillwick::benchmarks;

namespace {

Annotation markAt(int place) {
    Annotation mark;
    mark.start = {place / 1e4, 1.0 / (place + 3)};
    mark.end = {1.0 / 3, 0.75};
    mark.r = mark.a = 1;
    mark.lineWidth = 0.004;
    return mark;
}

/// A hundred captures a group.
ProjectFile projectOf(int captures, int marks) {
    ProjectFile project;
    project.videoName = QStringLiteral("match");
    project.videoBookmark = ProjectStore::makeBookmark(QUrl(QStringLiteral("file:///match.mp4")));
    for (int i = 0; i < captures; ++i) {
        if (i % 100 == 0)
            project.groups.emplaceBack().name = QStringLiteral("Séquence %1").arg(i / 100);
        FrameDTO& frame = project.groups.last().frames.emplaceBack();
        frame.timeValue = 1001LL * i;
        frame.timeScale = 30000;
        frame.notes = QStringLiteral("vue de face, appui gauche");
        frame.annotations.emplace();
        for (int mark = 0; mark < marks; ++mark)
            frame.annotations->append(markAt(i + mark));
    }
    return project;
}

/// The median of what several runs of the work took, in milliseconds.
template <typename Work>
double milliseconds(int rounds, Work work) {
    std::vector<double> durations;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        work();
        durations.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    return median(durations);
}

void measure(Report& report, const QString& aCase, const ProjectFile& project, int rounds) {
    const QTemporaryDir folder;
    const QUrl url = QUrl::fromLocalFile(folder.filePath(QStringLiteral("a.stillwick")));
    const QString unit = QStringLiteral("ms");
    const auto add = [&](const char* figure, auto work) {
        report.add(aCase, QString::fromLatin1(figure), milliseconds(rounds, work), unit);
    };
    const QByteArray text = encodeProject(project);
    const QJsonDocument tree = QJsonDocument::fromJson(text);
    if (decodeProject(text) != project || !tree.isObject())
        throw std::runtime_error("the project did not come back");
    report.add(aCase, QStringLiteral("size"), double(text.size()) / 1e6, QStringLiteral("MB"));
    add("encode", [&] { (void)encodeProject(project); });
    add("encode, Qt's tree", [&] { (void)tree.toJson(); });
    add("decode", [&] { (void)decodeProject(text); });
    add("decode, Qt's tree", [&] { (void)QJsonDocument::fromJson(text); });
    add("save, synchronised", [&] { ProjectStore::save(project, url); });
    add("save, floor: the same bytes written and synchronised",
        [&] { writeAndSynchronise(folder.filePath(QStringLiteral("b")), text); });
    add("load", [&] { (void)ProjectStore::load(url); });
    add("load, floor: the same bytes read", [&] { (void)readWhole(url.toLocalFile()); });
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!hasOnly(
            {QStringLiteral("--captures"), QStringLiteral("--rounds"), QStringLiteral("--json")}))
        return 2;
    const int captures = valueOf(QStringLiteral("--captures"), QStringLiteral("10000")).toInt();
    const int rounds =
        std::max(1, valueOf(QStringLiteral("--rounds"), QStringLiteral("9")).toInt());
    Report report(QStringLiteral("project"));
    for (const int marks : {0, 3})
        measure(report, QStringLiteral("%1 captures, %2 marks each").arg(captures).arg(marks),
                projectOf(captures, marks), rounds);
    return publish(report, QStringLiteral("project: medians of %1").arg(rounds));
}
