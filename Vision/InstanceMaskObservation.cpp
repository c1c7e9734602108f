#include "Vision/InstanceMaskObservation.h"

#include "Vision/ImageRequestHandler.h"
#include "Vision/VisionError.h"

#include <QColorSpace>

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace stillwick {
namespace {

// Whether each of the 256 labels is wanted.
using Choice = std::array<bool, 256>;

Choice choiceOf(std::span<const int> instances, const std::vector<int>& known) {
    Choice choice{};
    if (instances.empty())
        throw VisionError(VisionError::Category::UnknownInstance);
    for (const int instance : instances) {
        if (std::find(known.begin(), known.end(), instance) == known.end())
            throw VisionError(VisionError::Category::UnknownInstance);
        choice[static_cast<std::size_t>(instance)] = true;
    }
    return choice;
}

// A straight component from a premultiplied one, and an alpha times another; both rounded.
uchar straight(uchar component, uchar alpha) {
    return static_cast<uchar>(std::min((component * 255 + alpha / 2) / alpha, 255));
}
uchar faded(uchar alpha, uchar by) {
    return static_cast<uchar>((alpha * by + 127) / 255);
}

// Straight alpha: opacity stands beside the colours, not in them.
void maskRow(const uchar* picture, const uchar* alpha, const uchar* labels, const Choice& choice,
             std::span<uchar> result) {
    for (std::size_t x = 0; 4 * x < result.size(); ++x) {
        const uchar* from = picture + 4 * x;
        uchar* to = result.data() + 4 * x;
        const uchar opacity = choice[labels[x]] ? faded(from[3], alpha[x]) : uchar{0};
        if (opacity == 0)
            std::fill_n(to, 4, uchar{0});
        else if (from[3] == 255)
            std::copy_n(from, 3, to);
        else
            std::transform(from, from + 3, to, [&](uchar c) { return straight(c, from[3]); });
        to[3] = opacity;
    }
}

} // namespace

InstanceMaskObservation::InstanceMaskObservation(Foreground foreground)
    : m_foreground(std::move(foreground)),
      m_instances(static_cast<std::size_t>(m_foreground.instanceCount)) {
    Q_ASSERT(m_foreground.alpha.size() == m_foreground.labels.size());
    std::iota(m_instances.begin(), m_instances.end(), 1);
}

QImage InstanceMaskObservation::generateMaskedImage(std::span<const int> instances,
                                                    const ImageRequestHandler& handler,
                                                    MaskedImageExtent extent) const {
    const Choice choice = choiceOf(instances, m_instances);
    const QImage& picture = handler.picture();
    if (picture.size() != m_foreground.alpha.size())
        throw VisionError(VisionError::Category::OtherPicture);
    const QRect area =
        extent == MaskedImageExtent::WholePicture ? picture.rect() : extentOf(choice);
    QImage result(area.size(), QImage::Format_RGBA8888);
    if (result.isNull())
        throw VisionError(VisionError::Category::OutOfMemory);
    result.setColorSpace(picture.colorSpace());
    const auto rowBytes = static_cast<std::size_t>(area.width()) * 4;
    for (int y = 0; y < area.height(); ++y)
        maskRow(picture.constScanLine(area.y() + y) + 4 * area.x(),
                m_foreground.alpha.constScanLine(area.y() + y) + area.x(),
                m_foreground.labels.constScanLine(area.y() + y) + area.x(), choice,
                {result.scanLine(y), rowBytes});
    colourEdge(area, result);
    return result;
}

// What is not chosen stays all zeros.
void InstanceMaskObservation::colourEdge(const QRect& area, QImage& image) const {
    for (const EdgeColour& edge : m_foreground.edgeColours) {
        const QPoint place = edge.place - area.topLeft();
        if (!image.valid(place))
            continue;
        uchar* pixel = image.scanLine(place.y()) + std::ptrdiff_t{4} * place.x();
        if (pixel[3] > 0)
            std::copy(edge.colour.begin(), edge.colour.end(), pixel);
    }
}

QRect InstanceMaskObservation::extentOf(std::span<const bool> chosen) const {
    const QImage& labels = m_foreground.labels;
    int left = labels.width();
    int top = labels.height();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < labels.height(); ++y) {
        const uchar* row = labels.constScanLine(y);
        for (int x = 0; x < labels.width(); ++x)
            if (chosen[row[x]]) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = y;
            }
    }
    return {QPoint(left, top), QPoint(right, bottom)};
}

} // namespace stillwick
