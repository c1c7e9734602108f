#include "Starts.h"

#include "../Timings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

#include <memory>

namespace stillwick::benchmarks {

namespace {

constexpr int patience = 20'000; // milliseconds

/// An X server of its own; null where there is none.
std::unique_ptr<QProcess> startServer(QProcessEnvironment& environment) {
    if (QStandardPaths::findExecutable(QStringLiteral("Xvfb")).isEmpty())
        return nullptr;
    auto server = std::make_unique<QProcess>();
    server->setStandardErrorFile(QProcess::nullDevice());
    server->start(QStringLiteral("Xvfb"),
                  {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-noreset"),
                   QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-screen"),
                   QStringLiteral("0"), QStringLiteral("1600x900x24")});
    if (!server->waitForReadyRead(patience))
        return nullptr;
    environment.insert(QStringLiteral("DISPLAY"),
                       u':' + QString::fromLatin1(server->readLine().trimmed()));
    return server;
}

/// From before the program is there until it says that its window is painted; in milliseconds.
/// Negative where it does not.
double startOf(const QString& program, const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(program, {});
    const bool isPainted = process.waitForReadyRead(patience);
    const double span = double(timer.nsecsElapsed()) / 1e6;
    process.waitForFinished(patience);
    return isPainted ? span : -1;
}

void compare(Report& report, const QString& programs, int rounds, const QString& platform,
             QProcessEnvironment environment) {
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
    const QString ours = QDir(programs).filePath(QStringLiteral("bench-window-ours"));
    const QString bare = QDir(programs).filePath(QStringLiteral("bench-window-bare"));
    std::vector<double> oursTook;
    std::vector<double> bareTook;
    for (int round = -1; round < rounds; ++round) {
        const double one = startOf(ours, environment);
        const double other = startOf(bare, environment);
        if (round < 0)
            continue; // the first warms the files up
        oursTook.push_back(one);
        bareTook.push_back(other);
    }
    const QString name = QStringLiteral("start, ") + platform;
    report.add(name, QStringLiteral("ours, median"), median(oursTook), QStringLiteral("ms"));
    report.add(name, QStringLiteral("ours, slowest"), quantile(oursTook, 1), QStringLiteral("ms"));
    report.add(name, QStringLiteral("a bare window, median"), median(bareTook),
               QStringLiteral("ms"));
    report.add(name, QStringLiteral("ratio"), median(pairwiseRatios(oursTook, bareTook)), {});
}

} // namespace

void timeStarts(Report& report, const QString& programs, int rounds) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    compare(report, programs, rounds, QStringLiteral("offscreen"), environment);
    if (const auto server = startServer(environment)) {
        compare(report, programs, rounds, QStringLiteral("xcb"), environment);
        server->terminate();
        server->waitForFinished(patience);
    }
}

} // namespace stillwick::benchmarks
