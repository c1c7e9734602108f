// bench-scale --clips FOLDER [--captures N] [--part NAME] [--json FILE]: what very many captures
// take: memory, opening, saving, looking at one far away; and what capturing does to a film that is
// playing.
#include "../EventLoop.h"
#include "../Memory.h"
#include "../Options.h"
#include "../Report.h"
#include "../Timings.h"

#include "Media/FrameCache.h"
#include "Media/MediaAsset.h"
#include "Stillwick/AppState.h"
#include "Stillwick/CaptureLists.h"
#include "Stillwick/PictureStore.h"
#include "Stillwick/ProjectFile.h"
#include "Stillwick/ProjectStore.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

using namespace stillwick;
using namespace stillwick::benchmarks;

namespace {

constexpr double mebibyte = 1 << 20;

/// Cuts out the middle of every picture at once: what is measured is what captures take, not how
/// long finding subjects does.
class MiddleSegmenter final : public ForegroundSegmenter {
public:
    [[nodiscard]] Foreground segment(const QImage& picture, std::stop_token) const override {
        Foreground found{QImage(picture.size(), QImage::Format_Grayscale8),
                         QImage(picture.size(), QImage::Format_Grayscale8), 1};
        found.alpha.fill(0);
        found.labels.fill(0);
        const int left = picture.width() / 3;
        for (int y = 0; y < picture.height(); ++y) {
            std::fill_n(found.alpha.scanLine(y) + left, left, uchar(255));
            std::fill_n(found.labels.scanLine(y) + left, left, uchar(1));
        }
        return found;
    }
};

std::unique_ptr<AppState> newState(std::shared_ptr<const ForegroundSegmenter> segmenter) {
    AppState::Services services;
    services.subjectExtractor = std::make_shared<SubjectExtractionService>(std::move(segmenter));
    return std::make_unique<AppState>(std::move(services));
}

double framesHeld(const AppState& state) {
    return double(state.player()->currentItem()->asset()->frameCache()->size()) / mebibyte;
}

ProjectFile projectOf(const QString& film, int captures) {
    ProjectFile file;
    file.videoBookmark = ProjectStore::makeBookmark(QUrl::fromLocalFile(film));
    file.videoName = QStringLiteral("film");
    file.filter = QStringLiteral("none");
    Annotation mark;
    mark.end = {0.5, 0.5};
    constexpr int groups = 10;
    for (int g = 0; g < groups; ++g) {
        GroupDTO group{QStringLiteral("Groupe %1").arg(g + 1), QStringLiteral("Notes"), {}};
        for (int i = g; i < captures; i += groups)
            group.frames.append({(i * 1000 / 17) % 100'000, 1000,
                                 QStringLiteral("Note de la capture %1").arg(i),
                                 QList{mark, mark}});
        file.groups.append(group);
    }
    return file;
}

/// How long until the capture's picture is there to be shown.
double timeToPicture(AppState& state, const QUuid& id) {
    QElapsedTimer timer;
    timer.start();
    state.setSelection({id});
    restUntil([&] { return !frameOf(state.groups(), id)->thumbnail.isNull(); });
    const CapturedFrame frame = *state.previewFrame();
    const QImage picture = frame.thumbnail.image();
    return picture.isNull() ? -1 : milliseconds(timer);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double slowest(const std::vector<double>& values) {
    return *std::max_element(values.begin(), values.end());
}

/// Many captures of one film, with all their pictures.
void captureMany(Report& report, const QString& film, int captures) {
    const QString name = QStringLiteral("%1 captures").arg(captures);
    const QTemporaryDir folder;
    const QUrl project = QUrl::fromLocalFile(folder.filePath(QStringLiteral("p.stillwick")));
    ProjectStore::save(projectOf(film, captures), project);
    const auto state = newState(std::make_shared<MiddleSegmenter>());
    state->loadVideo(QUrl::fromLocalFile(film));
    rest(3000);
    const double before = residentMemory();
    state->openProject(project);
    restUntil([&] { return state->unfinishedFrames() == 0; });
    const auto store = PictureStore::shared();
    store->settle();
    const QSize size = state->previewFrame()->thumbnail.size();
    const double held = framesHeld(*state);
    const double total = residentMemory();
    const auto add = [&](const char* figure, double value, const char* unit) {
        report.add(name, QString::fromUtf8(figure), value, QString::fromUtf8(unit));
    };
    add("pictures as bitmaps", 2.0 * captures * size.width() * size.height() * 4 / mebibyte, "MiB");
    add("resident before any", before, "MiB");
    add("resident, all", total, "MiB");
    add("of that the player's frames", held, "MiB");
    add("of that pictures", double(store->usage().memory) / mebibyte, "MiB");
    add("resident, player's frames apart", total - held, "MiB");
    add("packed on the disk", double(store->usage().disk) / mebibyte, "MiB");
    std::mt19937 random(1);
    const QList<CapturedFrame> frames = state->allFrames();
    std::vector<double> times;
    std::vector<double> smallTimes;
    for (int i = 0; i < 50; ++i) {
        const CapturedFrame& frame = frames[qsizetype(random() % std::size_t(frames.size()))];
        QElapsedTimer timer;
        timer.start();
        (void)frame.thumbnail.small();
        smallTimes.push_back(milliseconds(timer));
        times.push_back(timeToPicture(*state, frame.id()));
    }
    add("a row's picture, median", median(smallTimes), "ms");
    add("looking at a far capture, median", median(times), "ms");
    add("looking at a far capture, slowest", slowest(times), "ms");
}

/// A project of very many captures, opened and saved.
void openMany(Report& report, const QString& film, int captures) {
    const QString name = QStringLiteral("%1 in a project").arg(captures);
    const auto add = [&](const char* figure, double value, const char* unit) {
        report.add(name, QString::fromUtf8(figure), value, QString::fromUtf8(unit));
    };
    const QTemporaryDir folder;
    const QUrl project = QUrl::fromLocalFile(folder.filePath(QStringLiteral("p.stillwick")));
    ProjectStore::save(projectOf(film, captures), project);
    const auto state = newState(standardSegmenter());
    QElapsedTimer timer;
    timer.start();
    state->openProject(project);
    restUntil([&] { return !state->player()->picture().isNull(); });
    add("opening", milliseconds(timer) / 1000, "s");
    rest(4000);
    const double held = framesHeld(*state);
    add("resident, all", residentMemory(), "MiB");
    add("of that the player's frames", held, "MiB");
    add("resident, player's frames apart", residentMemory() - held, "MiB");
    const QList<CapturedFrame> frames = state->allFrames();
    std::mt19937 random(2);
    std::vector<double> times;
    for (int i = 0; i < 15; ++i)
        times.push_back(
            timeToPicture(*state, frames[qsizetype(random() % std::size_t(frames.size()))].id()));
    add("grabbing a far capture, median", median(times), "ms");
    add("grabbing a far capture, slowest", slowest(times), "ms");
    std::vector<double> saves;
    for (int i = 0; i < 5; ++i) {
        timer.start();
        state->saveProject(project);
        saves.push_back(milliseconds(timer) / 1000);
    }
    add("saving, median", median(saves), "s");
    const auto alone = newState(standardSegmenter());
    timer.start();
    alone->loadVideo(QUrl::fromLocalFile(film));
    restUntil([&] { return !alone->player()->picture().isNull(); });
    add("opening, floor: the film alone", milliseconds(timer) / 1000, "s");
    add("size of the file", double(QFile(project.toLocalFile()).size()) / mebibyte, "MiB");
}

/// Ten captures in a second while a film plays.
void captureWhilePlaying(Report& report, const QString& film, int captures) {
    const QString name =
        captures > 0 ? QStringLiteral("%1 while playing").arg(captures) : QStringLiteral("playing");
    const auto state = newState(standardSegmenter());
    state->loadVideo(QUrl::fromLocalFile(film));
    restUntil([&] { return !state->player()->picture().isNull(); });
    rest(1500);
    state->togglePlayPause();
    rest(500);
    QElapsedTimer timer;
    timer.start();
    double longestCall = 0;
    for (int i = 0; i < captures; ++i) {
        QElapsedTimer call;
        call.start();
        state->captureCurrentFrame();
        longestCall = std::max(longestCall, milliseconds(call));
        rest(100);
    }
    const double begun = state->currentTime().seconds();
    while (timer.elapsed() < 8000)
        rest(20);
    const double played = state->currentTime().seconds() - begun;
    state->pause();
    const double pictures = std::max(1.0, played * 30);
    report.add(name, QStringLiteral("pictures left out"),
               100.0 * double(state->player()->droppedPictures()) / pictures, QStringLiteral("%"));
    if (captures == 0)
        return;
    report.add(name, QStringLiteral("longest press"), longestCall, QStringLiteral("ms"));
    restUntil([&] { return state->unfinishedFrames() == 0; });
    report.add(name, QStringLiteral("all cut out after"), milliseconds(timer) / 1000,
               QStringLiteral("s"));
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!hasOnly({QStringLiteral("--clips"), QStringLiteral("--captures"), QStringLiteral("--part"),
                  QStringLiteral("--json")}))
        return 2;
    const int captures = valueOf(QStringLiteral("--captures"), QStringLiteral("1000")).toInt();
    const QString film = clipNamed(QStringLiteral("1080p30-subjects.mp4"));
    if (film.isEmpty())
        return 1;
    Report report(QStringLiteral("scale"));
    const QString part = valueOf(QStringLiteral("--part"), {});
    const auto isWanted = [&part](const char* name) {
        return part.isEmpty() || part == QString::fromUtf8(name);
    };
    if (isWanted("captures"))
        captureMany(report, film, captures);
    if (isWanted("project"))
        openMany(report, film, captures * 10);
    if (isWanted("playing")) {
        captureWhilePlaying(report, film, 0);
        captureWhilePlaying(report, film, 10);
    }
    return publish(report, QStringLiteral("scale: captures of a 1080p film"));
}
