// bench-stepping --clips FOLDER [--samples N] [--only FILM] [--part moves] [--json FILE]: the time
// from asking for a picture to having it ready for painting, by us and by others, each alone on the
// machine in its turn. The part "moves" leaves out scrolling, dragging, playing and memory.
#include "../Options.h"
#include "../Report.h"
#include "../Timings.h"
#include "../grab/Clip.h"
#include "Extras.h"
#include "MpvSession.h"
#include "OurSession.h"
#include "WatchedApplication.h"

#include <QCoreApplication>
#include <QDir>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <random>

using namespace stillwick::benchmarks;

namespace {

struct Film {
    QString name;
    QString file;
    double rate = 30;
    double group = 0; ///< seconds from one key picture to the next
    double seconds = 0;
};

struct Samples {
    std::vector<double> stepBack;
    std::vector<double> stepBackAfterJump;
    std::vector<double> stepOn;
    std::vector<double> seek;
};

/// The same moves for everybody.
Samples measure(Stepper& stepper, const Film& film, int count) {
    // Half of the steps lie before the border between two groups, half after it.
    constexpr int restBefore = 4000;
    Samples samples;
    const double border = film.group * std::max(1.0, std::floor(film.seconds / film.group / 2));
    stepper.seek(border + (count / 2 + 0.5) / film.rate);
    stepper.rest(restBefore);
    for (int i = 0; i < count; ++i)
        samples.stepBack.push_back(stepper.stepBack());
    stepper.seek(border - (count / 2 + 0.5) / film.rate);
    stepper.rest(restBefore);
    // mpv shows one a frame's time; nobody is asked faster than a key repeats.
    constexpr double keyRepeat = 33;
    for (int i = 0; i < count; ++i) {
        samples.stepOn.push_back(stepper.stepOn());
        if (samples.stepOn.back() < keyRepeat)
            stepper.rest(int(keyRepeat - samples.stepOn.back()));
    }
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(0, film.seconds - 1);
    for (int i = 0; i < count; ++i)
        samples.seek.push_back(stepper.seek(anywhere(random)));
    for (int i = 0; i < count; ++i) {
        stepper.seek(anywhere(random));
        samples.stepBackAfterJump.push_back(stepper.stepBack());
    }
    return samples;
}

void addAll(Report& report, const Film& film, const QString& who, const Samples& samples) {
    const auto add = [&](const QString& what, const std::vector<double>& values) {
        report.add(film.name, what + QStringLiteral(", ") + who, median(values),
                   QStringLiteral("ms"));
        report.add(film.name, what + QStringLiteral(", ") + who + QStringLiteral(", 95th"),
                   quantile(values, 0.95), QStringLiteral("ms"));
    };
    add(QStringLiteral("step back"), samples.stepBack);
    add(QStringLiteral("step back after a jump"), samples.stepBackAfterJump);
    add(QStringLiteral("step on"), samples.stepOn);
    add(QStringLiteral("exact seek"), samples.seek);
}

void addRatios(Report& report, const Film& film, const Samples& ours, const Samples& theirs) {
    const auto add = [&](const QString& what, const std::vector<double>& a,
                         const std::vector<double>& b) {
        report.add(film.name, what + QStringLiteral(", mpv / ours"), median(b) / median(a),
                   QStringLiteral("x"));
    };
    add(QStringLiteral("step back"), ours.stepBack, theirs.stepBack);
    add(QStringLiteral("step back after a jump"), ours.stepBackAfterJump, theirs.stepBackAfterJump);
    add(QStringLiteral("step on"), ours.stepOn, theirs.stepOn);
    add(QStringLiteral("exact seek"), ours.seek, theirs.seek);
}

void benchmark(Report& report, const Film& film, int count, bool isWhole,
               WatchedApplication& application) {
    std::fprintf(stderr, "stepping through %s\n", qPrintable(film.name));
    const Samples theirs = measure(*makeMpvSession(film.file), film, count);
    addAll(report, film, QStringLiteral("mpv"), theirs);
    Samples ours;
    (void)application.takeLongest();
    {
        OurSession session(film.file);
        ours = measure(session, film, count);
        addAll(report, film, QStringLiteral("ours"), ours);
        addRatios(report, film, ours, theirs);
        report.add(film.name, QStringLiteral("longest call on the main thread"),
                   session.longestCall(), QStringLiteral("ms"));
        if (isWhole) {
            addHeldMemory(report, film.name, session);
            addScroll(report, film.name, session, film.rate, film.seconds);
            addDrag(report, film.name, session, film.seconds);
            addPlaying(report, film.name, session, film.rate);
        }
        const auto longest = application.takeLongest();
        report.add(film.name, QStringLiteral("longest event on the main thread"),
                   longest.wallMilliseconds, QStringLiteral("ms"));
        report.add(film.name, QStringLiteral("longest event, processor's time"),
                   longest.processorMilliseconds, QStringLiteral("ms"));
    }
    addBreakdown(report, film.name, film.file, film.seconds, count);
    addSeekFloor(report, film.name, film.file, film.rate, film.seconds, count, median(ours.seek));
    const std::vector<double> ffms2 = stepBackWithFfms2(film.file, film.rate, film.seconds, count);
    report.add(film.name, QStringLiteral("step back, FFMS2"), median(ffms2), QStringLiteral("ms"));
    report.add(film.name, QStringLiteral("step back, FFMS2 / ours"),
               median(ffms2) / median(ours.stepBack), QStringLiteral("x"));
}

} // namespace

int main(int argc, char** argv) {
    WatchedApplication application(argc, argv);
    if (!hasOnly({QStringLiteral("--clips"), QStringLiteral("--samples"), QStringLiteral("--only"),
                  QStringLiteral("--part"), QStringLiteral("--json")}))
        return 2;
    const QDir clips(valueOf(QStringLiteral("--clips"), QStringLiteral(".")));
    const int count =
        std::max(10, valueOf(QStringLiteral("--samples"), QStringLiteral("60")).toInt());
    const QString only = valueOf(QStringLiteral("--only"), {});
    const bool isWhole = valueOf(QStringLiteral("--part"), {}) != QStringLiteral("moves");
    const Film films[] = {
        {QStringLiteral("1080p30 H.264"), clips.filePath(QStringLiteral("1080p30.mp4")), 30,
         250 / 30.0},
        {QStringLiteral("1080p60 HEVC"), clips.filePath(QStringLiteral("1080p60.mp4")), 60, 2},
        {QStringLiteral("4K30 H.264"), clips.filePath(QStringLiteral("4k30.mp4")), 30, 2}};
    try {
        Report report(QStringLiteral("stepping"));
        for (Film film : films) {
            if (!only.isEmpty() && !film.name.startsWith(only))
                continue;
            film.seconds =
                double(Clip(film.file, Clip::Hashes::LeftOut).pictures().size()) / film.rate;
            benchmark(report, film, count, isWhole, application);
        }
        return publish(
            report, QStringLiteral("stepping: from the request to the picture, in milliseconds"));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "stepping: %s\n", error.what());
        return 1;
    }
}
