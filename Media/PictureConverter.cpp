#include "Media/PictureConverter.h"

#include "Media/Deinterlacing.h"
#include "Media/MediaError.h"
#include "Media/ToneMapping.h"
#include "Media/TrackDescription.h"

#include <QColorSpace>

#include <algorithm>
#include <new>
#include <utility>

namespace stillwick {

namespace {

bool isSameFormat(const PlaneFormat& a, const PlaneFormat& b) {
    return a.layout == b.layout && a.samples == b.samples && a.rows == b.rows &&
           a.depth == b.depth && a.color == b.color && a.isGrey == b.isGrey;
}

/// True for a frame of two fields that can be told apart.
bool hasTwoFields(const AVFrame& frame) {
    constexpr int leastHeight = 8;
    return frame.interlaced_frame != 0 && frame.height % 4 == 0 && frame.height >= leastHeight;
}

void fillAlpha(const PlanarPicture& picture) {
    for (int y = 0; y < picture.layout().height; ++y)
        std::fill_n(picture.row(3, y), picture.layout().width, std::uint8_t(255));
}

int premultiplied(int value, int alpha) {
    const int product = value * alpha + 128;
    return (product + (product >> 8)) >> 8; // exact division by 255
}

/// Interleaves a piece of a row, the alpha multiplied in where there is one.
void pack(const PlanarPicture::Row& samples, int left, int right, std::uint8_t* out) {
    const auto [r, g, b, a] = samples;
    for (int x = left; x < right && !a; ++x) {
        out[4 * x] = r[x];
        out[4 * x + 1] = g[x];
        out[4 * x + 2] = b[x];
        out[4 * x + 3] = 255;
    }
    for (int x = left; x < right && a; ++x) {
        out[4 * x] = std::uint8_t(premultiplied(r[x], a[x]));
        out[4 * x + 1] = std::uint8_t(premultiplied(g[x], a[x]));
        out[4 * x + 2] = std::uint8_t(premultiplied(b[x], a[x]));
        out[4 * x + 3] = a[x];
    }
}

QImage emptyImage(int width, int height, PicturePool& pool) {
    QImage image = pool.take(width, height);
    if (image.isNull())
        throw std::bad_alloc();
    image.setColorSpace(QColorSpace::SRgb);
    return image;
}

QImage packed(const PlanarPicture& rgb, PicturePool& pool) {
    const int width = rgb.layout().width;
    QImage image = emptyImage(width, rgb.layout().height, pool);
    for (int y = 0; y < rgb.layout().height; ++y)
        pack(rgb.rowsAt(y), 0, width, image.scanLine(y));
    return image;
}

bool hasSquarePixels(const VideoFrame& frame) {
    const AVRational ratio = sampleAspectRatio(frame);
    return ratio.num == ratio.den;
}

} // namespace

QImage PictureConverter::convert(const VideoFrame& frame, Orientation orientation) {
    try {
        QImage image = toBitmap(frame);
        return orientation == Orientation::Upright ? oriented(std::move(image), frame.track())
                                                   : image;
    } catch (const std::bad_alloc&) {
        throw MediaError::make(MediaError::Category::OutOfMemory);
    }
}

QImage PictureConverter::toBitmap(const VideoFrame& frame) {
    const AVFrame& picture = frame.avFrame();
    const libav::Frame planar = toPlanar(picture);
    const PlanarPicture source = PlanarPicture::of(*planar);
    const PlaneFormat format = PlaneFormat::of(source, *planar, colorOf(frame));
    const bool isPlain = !hasTwoFields(*planar) && !format.color.isHighDynamicRange();
    if (isPlain && hasSquarePixels(frame))
        return Yuv420Conversion::isFor(format)
                   ? convertedQuickly(format, source, {picture.width, picture.height})
                   : convertedByRows(format, source, {picture.width, picture.height});
    // What was added to reach a multiple of the chroma's size is cut off again.
    const PlanarPicture rgb =
        toRgb(frame, *planar, format, source).cropped(picture.width, picture.height);
    return packed(stretched(rgb, sampleAspectRatio(frame)), m_pool);
}

QImage PictureConverter::convertedQuickly(const PlaneFormat& from, const PlanarPicture& source,
                                          const QSize& size) {
    if (!m_quick.conversion || !isSameFormat(m_quick.from, from))
        m_quick = {from, Yuv420Conversion(from)};
    QImage image = emptyImage(size.width(), size.height(), m_pool);
    m_quick.conversion->convert(source, size.width(), size.height(), image.bits(),
                                image.bytesPerLine());
    return image;
}

/// Straight into the bitmap, for what needs one step only.
QImage PictureConverter::convertedByRows(const PlaneFormat& from, const PlanarPicture& source,
                                         const QSize& size) {
    prepare(m_toRgb, from,
            PlaneFormat::rgb(from.layout.width, from.layout.height, from.hasAlpha()));
    QImage image = emptyImage(size.width(), size.height(), m_pool);
    std::uint8_t* const bits = image.bits();
    const qsizetype stride = image.bytesPerLine();
    // What was added to reach a multiple of the chroma's size stays out.
    m_toRgb.conversion->convertByRows(
        source, [=](int y, int left, int right, const PlanarPicture::Row& samples) {
            if (y < size.height())
                pack(samples, left, std::min(right, size.width()), bits + y * stride);
        });
    return image;
}

void PictureConverter::prepare(Step& step, const PlaneFormat& from, const PlaneFormat& to) {
    if (step.conversion && isSameFormat(step.from, from) && isSameFormat(step.to, to))
        return;
    step.conversion.emplace(from, to, diffuseWhiteLuminance);
    step.from = from;
    step.to = to;
}

void PictureConverter::run(Step& step, const PlaneFormat& from, const PlaneFormat& to,
                           const PlanarPicture& source, const PlanarPicture& target) {
    prepare(step, from, to);
    step.conversion->convert(source, target);
}

/// Planes that are used again by the next picture of the same size.
PlanarPicture PictureConverter::scratch(const PlanarPicture::Layout& layout) {
    if (!m_scratch || m_scratch->layout() != layout)
        m_scratch.emplace(layout);
    return *m_scratch;
}

PlanarPicture PictureConverter::toRgb(const VideoFrame& frame, const AVFrame& planar,
                                      PlaneFormat format, const PlanarPicture& source) {
    const double peak = frame.track().peakLuminance;
    PlanarPicture rgb = scratch(
        PlaneFormat::rgb(format.layout.width, format.layout.height, format.hasAlpha()).layout);
    if (!hasTwoFields(planar)) {
        convertRows(format, source, rgb, peak);
        return rgb;
    }
    format.layout.height /= 2;
    for (const int parity : {0, 1}) {
        format.rows = parity == 0 ? PlaneFormat::Rows::TopField : PlaneFormat::Rows::BottomField;
        convertRows(format, source.field(parity), rgb.field(parity), peak);
    }
    deinterlace(rgb, planar.top_field_first != 0 ? 0 : 1);
    return rgb;
}

void PictureConverter::convertRows(const PlaneFormat& from, const PlanarPicture& source,
                                   const PlanarPicture& rgb, double peakLuminance) {
    PlaneFormat to = PlaneFormat::rgb(from.layout.width, from.layout.height, from.hasAlpha());
    to.rows = from.rows;
    if (!from.color.isHighDynamicRange()) {
        run(m_toRgb, from, to, source, rgb);
        return;
    }
    to.samples = PlaneFormat::Samples::Float;
    to.depth = 32;
    to.layout.bytesPerSample = 4;
    to.color.transfer = AVCOL_TRC_LINEAR;
    const PlanarPicture light(to.layout);
    run(m_toRgb, from, to, source, light);
    toneMap(light, peakLuminance / diffuseWhiteLuminance, rgb);
    if (from.hasAlpha())
        fillAlpha(rgb);
}

PlanarPicture PictureConverter::stretched(PlanarPicture rgb, AVRational ratio) {
    if (ratio.num == ratio.den)
        return rgb;
    const PlaneFormat from =
        PlaneFormat::rgb(rgb.layout().width, rgb.layout().height, rgb.layout().planes == 4);
    PlaneFormat to = from;
    if (ratio.num > ratio.den)
        to.layout.width = int(av_rescale(from.layout.width, ratio.num, ratio.den));
    else
        to.layout.height = int(av_rescale(from.layout.height, ratio.den, ratio.num));
    PlanarPicture result(to.layout);
    run(m_stretch, from, to, rgb, result);
    return result;
}

} // namespace stillwick
