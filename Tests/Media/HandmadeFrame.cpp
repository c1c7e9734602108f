#include "HandmadeFrame.h"

#include <QRect>

#include <algorithm>
#include <cstdlib>
#include <ostream>

namespace stillwick::testing {

namespace {

const AVPixFmtDescriptor& describe(const AVFrame& frame) {
    return *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
}

QSize sizeOf(const AVFrame& frame, int component) {
    const AVPixFmtDescriptor& format = describe(frame);
    const bool isChroma = (component == 1 || component == 2) &&
                          (format.flags & AV_PIX_FMT_FLAG_RGB) == 0 && format.nb_components > 2;
    return isChroma ? QSize(AV_CEIL_RSHIFT(frame.width, format.log2_chroma_w),
                            AV_CEIL_RSHIFT(frame.height, format.log2_chroma_h))
                    : QSize(frame.width, frame.height);
}

} // namespace

HandmadeFrame::HandmadeFrame(AVPixelFormat format, int width, int height)
    : m_frame(libav::makeFrame()) {
    m_frame->format = format;
    m_frame->width = width;
    m_frame->height = height;
    m_frame->pts = 0;
    if (av_frame_get_buffer(m_frame.get(), 0) < 0)
        throw std::bad_alloc();
    for (std::size_t i = 0; i < std::size(m_frame->buf) && m_frame->buf[i]; ++i)
        std::fill_n(m_frame->buf[i]->data, m_frame->buf[i]->size, std::uint8_t(0));
}

int HandmadeFrame::depth() const {
    return describe(*m_frame).comp[0].depth;
}

void HandmadeFrame::set(int component, int x, int y, int value) {
    const AVPixFmtDescriptor& format = describe(*m_frame);
    const AVComponentDescriptor& place = format.comp[component];
    std::uint8_t* bytes = m_frame->data[place.plane] +
                          std::ptrdiff_t(m_frame->linesize[place.plane]) * y +
                          std::ptrdiff_t(place.step) * x + place.offset;
    const unsigned mask = ((1U << unsigned(place.depth)) - 1) << unsigned(place.shift);
    const unsigned bits = unsigned(value) << unsigned(place.shift) & mask;
    const auto put = [bits, mask](std::uint8_t& byte, unsigned shift) {
        byte = std::uint8_t((byte & ~(mask >> shift)) | bits >> shift);
    };
    if (place.depth + place.shift <= 8) {
        put(*bytes, 0);
        return;
    }
    const bool isBigEndian = (format.flags & AV_PIX_FMT_FLAG_BE) != 0;
    put(bytes[isBigEndian ? 1 : 0], 0);
    put(bytes[isBigEndian ? 0 : 1], 8);
}

void HandmadeFrame::fill(int component, const QRect& rectangle, int value) {
    for (int y = rectangle.top(); y <= rectangle.bottom(); ++y) {
        for (int x = rectangle.left(); x <= rectangle.right(); ++x)
            set(component, x, y, value);
    }
}

void HandmadeFrame::fill(int component, int value) {
    fill(component, QRect(QPoint(), sizeOf(*m_frame, component)), value);
}

VideoFrame HandmadeFrame::video(const TrackDescription& track) const {
    return {libav::checked(libav::Frame(av_frame_clone(m_frame.get()))), track};
}

Stored storedAt(const QImage& image, int x, int y) {
    const std::uint8_t* pixel = image.constScanLine(y) + std::ptrdiff_t(4) * x;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

int distance(const Stored& a, const Stored& b) {
    return std::max(
        {std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b), std::abs(a.a - b.a)});
}

int distance(const QImage& a, const QImage& b) {
    if (a.size() != b.size())
        return 255;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            largest = std::max(largest, distance(storedAt(a, x, y), storedAt(b, x, y)));
    }
    return largest;
}

double meanDistance(const QImage& a, const QImage& b) {
    if (a.size() != b.size() || a.isNull())
        return 255;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const Stored p = storedAt(a, x, y);
            const Stored q = storedAt(b, x, y);
            sum += std::abs(p.r - q.r) + std::abs(p.g - q.g) + std::abs(p.b - q.b);
        }
    }
    return sum / (3.0 * a.width() * a.height());
}

std::ostream& operator<<(std::ostream& stream, const Stored& color) {
    return stream << '(' << color.r << ", " << color.g << ", " << color.b << ", " << color.a << ')';
}

} // namespace stillwick::testing
