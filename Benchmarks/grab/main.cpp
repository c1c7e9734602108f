// bench-grab --clips FOLDER [--only 1080p30] [--grabs N] [--checks N] [--json FILE]: times exact
// grabs at random times, by us and by others, and compares N of ours with a linear decode.
#include "../Options.h"
#include "../Report.h"
#include "Contest.h"

#include <QCoreApplication>
#include <QDir>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <exception>

using namespace stillwick::benchmarks;

namespace {

void contend(Report& report, const QString& path, const QString& name, const Contest::Size& size) {
    std::fprintf(stderr, "timing %s\n", qPrintable(name));
    Contest contest(path, name, size);
    contest.run();
    contest.reportTo(report);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!hasOnly({QStringLiteral("--clips"), QStringLiteral("--only"), QStringLiteral("--grabs"),
                  QStringLiteral("--checks"), QStringLiteral("--json")}))
        return 2;
    const QDir clips(valueOf(QStringLiteral("--clips"), QStringLiteral(".")));
    const int grabs = std::max(2, valueOf(QStringLiteral("--grabs"), QStringLiteral("50")).toInt());
    const int checks = valueOf(QStringLiteral("--checks"), QStringLiteral("200")).toInt();
    constexpr int firstPictures = 5;
    const QString only = valueOf(QStringLiteral("--only"), {});
    try {
        Report report(QStringLiteral("grab"));
        contend(report, clips.filePath(QStringLiteral("1080p30.mp4")), QStringLiteral("1080p30"),
                {grabs, std::max(0, checks - 2 * grabs), firstPictures});
        if (only != QStringLiteral("1080p30"))
            contend(report, clips.filePath(QStringLiteral("4k30.mp4")), QStringLiteral("4K30"),
                    {grabs / 2, 0, firstPictures});
        return publish(report, QStringLiteral("grab: exact pictures at random times"));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "grab: %s\n", error.what());
        return 1;
    }
}
