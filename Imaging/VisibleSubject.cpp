#include "Imaging/VisibleSubject.h"

#include "Imaging/AlphaPlane.h"
#include "Imaging/MatrixView.h"
#include "Imaging/StraightAlpha.h"

#include <QColorSpace>
#include <QRect>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace stillwick {

namespace {

/// A subject as large as a square of this side is drawn pixel by pixel, a larger one coarser.
constexpr double drawingSidePixels = 800;
/// How far any drawing looks, in pixels of the drawing.
constexpr double reachPixels = 12;

using Rgb = cv::Vec3b;

double scaleOf(QSize box) {
    return std::max(1.0, std::sqrt(double(box.width()) * box.height()) / drawingSidePixels);
}

/// Sweeps over the rows; each hidden pixel takes the colour of the neighbour behind or beside it
/// that is fewer steps from a visible one.
class OutwardSweep final {
public:
    OutwardSweep(cv::Mat3b colors, const cv::Mat1b& alpha)
        : m_colors(std::move(colors)), m_steps(alpha.size()) {
        // As far as the picture is long there is always a visible pixel.
        const int far = alpha.rows + alpha.cols;
        for (int y = 0; y < alpha.rows; ++y)
            std::transform(alpha[y], alpha[y] + alpha.cols, m_steps[y],
                           [far](uchar a) { return a == 0 ? far : 0; });
    }

    void run() {
        const int last = m_steps.rows - 1;
        for (int y = 0; y <= last; ++y)
            sweepRow(y, std::max(y - 1, 0), 0, m_steps.cols, 1);
        for (int y = last; y >= 0; --y)
            sweepRow(y, std::min(y + 1, last), m_steps.cols - 1, -1, -1);
    }

private:
    void sweepRow(int y, int behind, int from, int end, int step) {
        int* const steps = m_steps[y];
        Rgb* const colors = m_colors[y];
        const int* const stepsBehind = m_steps[behind];
        const Rgb* const colorsBehind = m_colors[behind];
        for (int x = from; x != end; x += step) {
            if (steps[x] == 0)
                continue;
            if (x != from && steps[x - step] + 1 < steps[x]) {
                steps[x] = steps[x - step] + 1;
                colors[x] = colors[x - step];
            }
            if (stepsBehind[x] + 1 < steps[x]) {
                steps[x] = stepsBehind[x] + 1;
                colors[x] = colorsBehind[x];
            }
        }
    }

    cv::Mat3b m_colors;
    cv::Mat1i m_steps;
};

VisibleSubject subjectIn(const QImage& straight, const QRect& box, int margin) {
    const QSize size = box.size() + QSize(2 * margin, 2 * margin);
    VisibleSubject subject{.colors = QImage(size, QImage::Format_RGB888),
                           .alpha = QImage(size, QImage::Format_Grayscale8),
                           .scale = scaleOf(box.size())};
    if (subject.colors.isNull() || subject.alpha.isNull())
        throw std::bad_alloc();
    subject.alpha.fill(0);
    const cv::Rect from(box.left(), box.top(), box.width(), box.height());
    const cv::Rect to(margin, margin, box.width(), box.height());
    const cv::Mat picture = matrixView(straight)(from);
    const cv::Mat3b colors = matrixView(subject.colors);
    const cv::Mat1b alpha = matrixView(subject.alpha);
    cv::cvtColor(picture, colors(to), cv::COLOR_RGBA2RGB);
    cv::extractChannel(picture, alpha(to), 3);
    OutwardSweep(colors, alpha).run();
    return subject;
}

/// Lays the drawing, less its margin, over the box.
void paste(const QImage& drawing, int margin, const QRect& box, QImage& layer) {
    const cv::Rect from(margin, margin, box.width(), box.height());
    const cv::Rect to(box.left(), box.top(), box.width(), box.height());
    cv::cvtColor(matrixView(drawing)(from), matrixView(layer)(to), cv::COLOR_RGB2RGBA);
}

QImage drawnLayer(const QImage& image, const SubjectDrawing& draw) {
    const QImage straight = withStraightAlpha(image);
    QImage layer(straight.size(), QImage::Format_RGBA8888);
    if (layer.isNull())
        return {};
    layer.setColorSpace(straight.colorSpace());
    layer.fill(Qt::white);
    const QRect box = boxOfAlphaAbove(straight, 0);
    if (box.isEmpty())
        return layer;
    const int margin = int(std::ceil(reachPixels * scaleOf(box.size())));
    const QImage drawing = draw(subjectIn(straight, box, margin));
    if (drawing.isNull())
        return {};
    paste(drawing, margin, box, layer);
    return layer;
}

} // namespace

QSize VisibleSubject::drawingSize(double coarseness) const {
    const QSizeF size = QSizeF(colors.size()) / (scale * coarseness);
    return size.toSize().expandedTo({1, 1});
}

QImage colorLayer(const QImage& image, const SubjectDrawing& draw) {
    try {
        return drawnLayer(image, draw);
    } catch (const cv::Exception&) {
        return {};
    } catch (const std::bad_alloc&) {
        return {};
    }
}

} // namespace stillwick
