// bench-edges [--rounds N] [--json FILE]: what finishing a cut-out's border costs on one thread,
// beside OpenCV's own filters on the opacity alone.
#include "../Options.h"
#include "../Report.h"
#include "../Timings.h"

#include "Stillwick/EdgeProcessingService.h"

#include <QColorSpace>
#include <QElapsedTimer>
#include <QPainter>
#include <QPainterPath>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

using namespace stillwick;
using namespace stillwick::benchmarks;

namespace {

const QString aCase = QStringLiteral("1080p, half visible");

/// A figure with arms and gaps that covers half of the picture.
QImage cutOut() {
    QImage image(1920, 1080, QImage::Format_RGBA8888);
    image.setColorSpace(QColorSpace(QColorSpace::SRgb));
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QLinearGradient gradient(0, 0, 1920, 1080);
    gradient.setColorAt(0, QColor(220, 140, 60));
    gradient.setColorAt(1, QColor(40, 80, 190));
    painter.setBrush(gradient);
    QPainterPath figure;
    for (int i = 0; i <= 720; ++i) {
        const double angle = i * 3.14159265358979 / 360;
        const double reach = 1 + 0.12 * std::sin(9 * angle);
        const QPointF point(960 + 700 * reach * std::cos(angle),
                            540 + 470 * reach * std::sin(angle));
        i == 0 ? figure.moveTo(point) : figure.lineTo(point);
    }
    painter.drawPath(figure);
    painter.end();
    return image;
}

double share(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += image.constScanLine(y)[4 * x + 3];
    return 100 * sum / 255 / image.width() / image.height();
}

double medianMilliseconds(const std::function<void()>& work, int rounds) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    return median(times);
}

void measure(Report& report, int rounds) {
    const QImage image = cutOut();
    // A service of its own for each: one that did the same before has the answer at hand.
    const auto clean = [&image](double shrink, double feather) {
        (void)EdgeProcessingService().cleanEdges(image, shrink, feather);
    };
    const auto add = [&report](const char* figure, double value, const char* unit) {
        report.add(aCase, QString::fromUtf8(figure), value, QString::fromUtf8(unit));
        return value;
    };
    const auto time = [&add, rounds](const char* figure, const std::function<void()>& work) {
        return add(figure, medianMilliseconds(work, rounds), "ms");
    };
    add("visible", share(image), "%");
    const double shrink = time("shrink 20", [&] { clean(20, 0); });
    time("shrink 2.4", [&] { clean(2.4, 0); });
    const double outline =
        time("outline 20", [&] { (void)EdgeProcessingService().addOutline(image, 20, Qt::white); });
    const double feather = time("feather 10", [&] { clean(0, 10); });
    cv::Mat alpha(image.height(), image.width(), CV_8UC1);
    const cv::Mat rgba(image.height(), image.width(), CV_8UC4,
                       const_cast<uchar*>(image.constBits()));
    cv::extractChannel(rgba, alpha, 3);
    cv::Mat result;
    const cv::Mat disc = cv::getStructuringElement(cv::MORPH_ELLIPSE, {41, 41});
    const double erode =
        time("cv::erode, ellipse of 41, opacity alone", [&] { cv::erode(alpha, result, disc); });
    const double blur = time("cv::GaussianBlur, 10, opacity alone", [&] {
        cv::GaussianBlur(alpha, result, {}, 10, 10, cv::BORDER_REPLICATE);
    });
    // Whatever is done to a picture, another as large is written.
    time("floor: a copy of the picture", [&] { (void)image.copy(); });
    add("cv::erode / shrink 20", erode / shrink, "x");
    add("cv::erode / outline 20", erode / outline, "x");
    add("cv::GaussianBlur / feather 10", blur / feather, "x");
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!hasOnly({QStringLiteral("--rounds"), QStringLiteral("--json")}))
        return 2;
    cv::setNumThreads(1);
    Report report(QStringLiteral("edges"));
    const int rounds =
        std::max(1, valueOf(QStringLiteral("--rounds"), QStringLiteral("21")).toInt());
    measure(report, rounds);
    return publish(report, QStringLiteral("edges: one thread, median of %1").arg(rounds));
}
