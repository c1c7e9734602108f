// bench-cutout PICTURE [--json FILE]: how long a whole extraction of a 1080p still takes, and how
// much memory above the decoded picture.
#include "../Memory.h"
#include "../Options.h"
#include "../Report.h"
#include "../Timings.h"

#include "Stillwick/SubjectExtractionService.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QTextStream>

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
    const QString aCase = QStringLiteral("1080p still");
    const QString unit = QStringLiteral("ms");
    benchmarks::Report report(QStringLiteral("cutout"));
    report.add(aCase, QStringLiteral("median"), benchmarks::median(milliseconds), unit);
    report.add(aCase, QStringLiteral("quickest"), benchmarks::quantile(milliseconds, 0), unit);
    report.add(aCase, QStringLiteral("memory above the picture"), benchmarks::peakMemory() - before,
               QStringLiteral("MiB"));
    return benchmarks::publish(report, QStringLiteral("cutout: a whole extraction"));
}

} // namespace
} // namespace stillwick

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return stillwick::run(QCoreApplication::arguments());
}
