// bench-styles [--rounds N] [--json FILE]: how long each style takes for a large cut-out, beside
// one plain filter of the whole picture.
#include "../Options.h"
#include "../Report.h"
#include "../Timings.h"
#include "Stillwick/ImageFilterService.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QStringList>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <thread>
#include <vector>

using namespace stillwick;
using namespace stillwick::benchmarks;

namespace {

/// The height of the drawn subject at a place, from 0 to 1: waves, folds and a little noise.
double texture(int x, int y, std::uint32_t& random) {
    random = random * 1664525U + 1013904223U;
    const double noise = (double(random >> 24) - 128) / 128;
    const double waves = std::sin(x / 37.0) * std::cos(y / 53.0) + 0.4 * std::sin((x + y) / 11.0);
    return 0.5 + 0.3 * waves + 0.03 * noise;
}

/// A picture of 1920 × 1080 with an ellipse that fills half of it, soft at its edge.
QImage syntheticCutOut() {
    QImage image(1920, 1080, QImage::Format_RGBA8888);
    std::uint32_t random = 1;
    for (int y = 0; y < image.height(); ++y) {
        uchar* pixel = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x, pixel += 4) {
            const double radius = std::hypot((x - 960) / 660.0, (y - 540) / 500.0);
            const double value = texture(x, y, random);
            pixel[0] = uchar(std::clamp(255 * value, 0.0, 255.0));
            pixel[1] = uchar(std::clamp(200 * value + 30, 0.0, 255.0));
            pixel[2] = uchar(std::clamp(255 - 220 * value, 0.0, 255.0));
            pixel[3] = uchar(std::clamp((1 - radius) * 300 * 255 / 2, 0.0, 255.0));
        }
    }
    return image;
}

double millisecondsOf(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) * 1e-6;
}

/// What is timed: one row of the table.
struct Row {
    QString name;
    std::function<void()> work;
};

/// Two threads share the styles: each takes the next when it is done with one.
void renderAllStyles(const QImage& image) {
    const ImageFilterService filter;
    std::atomic<std::size_t> next = 0;
    const auto renderRest = [&] {
        for (std::size_t i = next++; i < allFilterStyles.size(); i = next++)
            static_cast<void>(filter.apply(allFilterStyles.at(i), image));
    };
    const std::jthread other(renderRest);
    renderRest();
}

std::vector<Row> rowsFor(const QImage& image) {
    std::vector<Row> rows;
    for (const FilterStyle style : allFilterStyles)
        rows.push_back({rawValue(style), [style, image] {
                            const ImageFilterService filter;
                            static_cast<void>(filter.apply(style, image));
                        }});
    rows.push_back({QStringLiteral("the four together"), [image] {
                        renderAllStyles(image);
                    }});
    rows.push_back({QStringLiteral("floor: a copy of the picture"), [image] {
                        static_cast<void>(image.copy());
                    }});
    const QImage colors = image.convertToFormat(QImage::Format_RGB888);
    rows.push_back({QStringLiteral("peer: bilateral filter, d = 9"), [colors] {
                        const cv::Mat from(colors.height(), colors.width(), CV_8UC3,
                                           const_cast<uchar*>(colors.constBits()),
                                           std::size_t(colors.bytesPerLine()));
                        cv::Mat smooth;
                        cv::bilateralFilter(from, smooth, 9, 50, 50);
                    }});
    return rows;
}

void timeRows(const std::vector<Row>& rows, int threads, int rounds, Report& report) {
    cv::setNumThreads(threads);
    std::vector<std::vector<double>> times(rows.size());
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < rows.size(); ++i)
            times[i].push_back(millisecondsOf(rows[i].work));
    const QString column =
        threads == 1 ? QStringLiteral("1 thread") : QStringLiteral("%1 threads").arg(threads);
    for (std::size_t i = 0; i < rows.size(); ++i)
        report.add(column, rows[i].name, median(times[i]), QStringLiteral("ms"));
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!hasOnly({QStringLiteral("--rounds"), QStringLiteral("--json")}))
        return 2;
    const int rounds =
        std::max(1, valueOf(QStringLiteral("--rounds"), QStringLiteral("15")).toInt());
    const std::vector<Row> rows = rowsFor(syntheticCutOut());
    Report report(QStringLiteral("styles"));
    for (const int threads : {1, 2})
        timeRows(rows, threads, rounds, report);
    return publish(report,
                   QStringLiteral("styles: a cut-out of half a 1080p picture, median times; "
                                  "the four together always by two callers"));
}
