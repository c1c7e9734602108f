// bench-export --clips FOLDER [--captures N] [--json FILE]: what exporting finished pictures costs,
// step by step, beside ffmpeg's linear decode and Qt's own PNG writer.
#include "../DiskFloor.h"
#include "../Memory.h"
#include "../Options.h"
#include "../Report.h"

#include "Imaging/PngEncoder.h"
#include "Media/MediaAsset.h"
#include "Stillwick/BatchExportService.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <stdexcept>

using namespace stillwick;
using namespace stillwick::benchmarks;

namespace {

const QString aCase = QStringLiteral("1080p30, comic, outline 6");

double seconds(const QElapsedTimer& timer) {
    return double(timer.nsecsElapsed()) / 1e9;
}

VideoFrameExtractorService extractorOf(const QString& film) {
    auto asset = std::make_shared<const MediaAsset>(film);
    asset->open();
    VideoFrameExtractorService extractor;
    extractor.prepare(std::move(asset));
    return extractor;
}

/// Captures one second apart, all half-way between two pictures' times.
CMTime timeOf(int capture) {
    return CMTime::make(600 * capture + 310, 600);
}

ExportJob jobOf(int captures, const QString& folder) {
    QList<CapturedFrame> frames;
    for (int i = 0; i < captures; ++i)
        frames.append(CapturedFrame(timeOf(i), {}, {}));
    ExportJob job;
    job.groups = {{QStringLiteral("Captures"), {}, frames, ExportGroup::Placement::outputFolder}};
    job.videoName = QStringLiteral("film");
    job.outputFolder = folder;
    job.filter = FilterStyle::comic;
    job.edge = {0, 0, true, 6, 1, 1, 1, 1};
    return job;
}

double exportAll(const QString& film, int captures, const QString& folder) {
    const BatchExportService service(extractorOf(film),
                                     std::make_shared<SubjectExtractionService>(),
                                     ImageExportService(), ExtractRenderer::make());
    int failed = 0;
    QElapsedTimer timer;
    timer.start();
    QCoro::waitFor(service.run(jobOf(captures, folder), {[](int) {},
                                                         [&failed](const ExportFailure&) {
                                                             ++failed;
                                                         }}));
    if (failed > 0)
        throw std::runtime_error("a capture failed");
    return seconds(timer);
}

/// The steps of an export, each timed alone; and the same pictures written by Qt.
struct Steps {
    double decode = 0;
    double segmentation = 0;
    double rendering = 0;
    double png = 0;
    double encoding = 0;
    double qtEncoding = 0;
    double disk = 0;
    double bytes = 0;
    double qtBytes = 0;
};

QCoro::Task<> grab(VideoFrameExtractorService& extractor, CMTime time, QImage& picture) {
    picture = co_await extractor.image(time);
}

Steps timeSteps(const QString& film, int captures, const QString& folder) {
    VideoFrameExtractorService extractor = extractorOf(film);
    const SubjectExtractionService subjects;
    const ExtractRenderer renderer = ExtractRenderer::make();
    const ExportJob job = jobOf(captures, folder);
    Steps steps;
    for (int i = 0; i < captures; ++i) {
        QElapsedTimer timer;
        const auto lap = [&timer](double& sum) {
            sum += seconds(timer);
            timer.start();
        };
        timer.start();
        QImage picture;
        QCoro::waitFor(grab(extractor, timeOf(i), picture));
        lap(steps.decode);
        const QImage cutOut = subjects.extractNow(picture, ExportMode::merged, false).front();
        lap(steps.segmentation);
        const QImage finished = renderer.render(cutOut, job.filter, job.edge);
        lap(steps.rendering);
        ImageExportService().writePNG(finished, QDir(folder).filePath(QStringLiteral("a.png")));
        lap(steps.png);
        const QByteArray png = encodePng(finished);
        steps.bytes += double(png.size());
        lap(steps.encoding);
        writeAndSynchronise(QDir(folder).filePath(QStringLiteral("a.png")), png);
        lap(steps.disk);
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        finished.save(&buffer, "PNG");
        lap(steps.qtEncoding);
        steps.qtBytes += double(buffer.size());
    }
    return steps;
}

/// How long ffmpeg takes to decode as much of the film as the captures span.
double linearDecode(const QString& film, int captures) {
    QElapsedTimer timer;
    timer.start();
    const int status = QProcess::execute(
        QStringLiteral("ffmpeg"),
        {QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
         QStringLiteral("-t"), QString::number(captures), QStringLiteral("-i"), film,
         QStringLiteral("-map"), QStringLiteral("0:v:0"), QStringLiteral("-f"),
         QStringLiteral("null"), QStringLiteral("-")});
    if (status != 0)
        throw std::runtime_error("ffmpeg failed");
    return seconds(timer);
}

void measure(Report& report, const QString& film, int captures) {
    const QTemporaryDir folder;
    const auto add = [&report](const char* figure, double value, const char* unit) {
        report.add(aCase, QString::fromUtf8(figure), value, QString::fromUtf8(unit));
    };
    exportAll(film, std::max(captures / 5, 1), folder.path());
    const double memoryAfterFew = peakMemory();
    const double whole = exportAll(film, captures, folder.path());
    const double memory = peakMemory();
    const double linear = linearDecode(film, captures);
    const Steps steps = timeSteps(film, captures, folder.path());
    const double known = steps.decode + steps.segmentation + steps.rendering + steps.png;
    add("a capture", whole / captures, "s");
    add("of that decoding", steps.decode / captures, "s");
    add("of that segmentation", steps.segmentation / captures, "s");
    add("of that rendering", steps.rendering / captures, "s");
    add("of that PNG", steps.png / captures, "s");
    add("of that other", (whole - known) / captures, "s");
    add("other / a capture", 100 * (whole - known) / whole, "%");
    add("linear decode by ffmpeg, a capture", linear / captures, "s");
    add("decoding / linear decode by ffmpeg", steps.decode / linear, "x");
    add("peak memory after a fifth", memoryAfterFew, "MiB");
    add("peak memory after all", memory, "MiB");
    add("PNG and its file, ours", 1000 * steps.png / captures, "ms");
    add("PNG and its file, floor: the same bytes written and synchronised",
        1000 * steps.disk / captures, "ms");
    add("PNG, ours", 1000 * steps.encoding / captures, "ms");
    add("PNG, Qt's writer", 1000 * steps.qtEncoding / captures, "ms");
    add("PNG, Qt's writer / ours", steps.qtEncoding / steps.encoding, "x");
    add("PNG's size, ours / Qt's writer", steps.bytes / steps.qtBytes, "x");
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!hasOnly(
            {QStringLiteral("--clips"), QStringLiteral("--captures"), QStringLiteral("--json")}))
        return 2;
    const QDir clips(valueOf(QStringLiteral("--clips"), QStringLiteral(".")));
    const int captures =
        std::clamp(valueOf(QStringLiteral("--captures"), QStringLiteral("100")).toInt(), 5, 100);
    try {
        Report report(QStringLiteral("export"));
        measure(report, clips.filePath(QStringLiteral("1080p30-subjects.mp4")), captures);
        return publish(report, QStringLiteral("export: captures one second apart, merged"));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "export: %s\n", error.what());
        return 1;
    }
}
