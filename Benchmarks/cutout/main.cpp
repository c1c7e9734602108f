// bench-cutout PICTURE: how long a whole extraction of a 1080p still takes, and how much memory
// above the decoded picture.
#include "../Memory.h"

#include "Stillwick/SubjectExtractionService.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QTextStream>

#include <algorithm>
#include <chrono>
#include <vector>

namespace stillwick {
namespace {

constexpr int rounds = 9;

// From here on the peak is counted anew.
void forgetPeak() {
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

int run(const QStringList& arguments) {
    const QImage picture = QImage(arguments.value(1))
                               .convertToFormat(QImage::Format_RGBA8888_Premultiplied)
                               .scaled(1920, 1080, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (picture.isNull()) {
        QTextStream(stderr) << "usage: bench-cutout PICTURE\n";
        return 2;
    }
    const SubjectExtractionService service;
    forgetPeak();
    const double before = benchmarks::residentMemory();
    std::vector<double> milliseconds;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        static_cast<void>(service.extractNow(picture, ExportMode::merged, false));
        const std::chrono::duration<double, std::milli> taken =
            std::chrono::steady_clock::now() - start;
        milliseconds.push_back(taken.count());
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    QTextStream(stdout) << "1080p still: median " << qRound(milliseconds[rounds / 2])
                        << " ms, quickest " << qRound(milliseconds.front()) << " ms, "
                        << qRound(benchmarks::peakMemory() - before) << " MiB above the picture\n";
    return 0;
}

} // namespace
} // namespace stillwick

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return stillwick::run(QCoreApplication::arguments());
}
