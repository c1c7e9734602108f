#include "Media/PlanarPicture.h"

#include "Media/MediaError.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace stillwick {

namespace {

// What packed and semi-planar formats are unpacked to, without loss: the least that holds them.
constexpr std::array planarFormats = {
    AV_PIX_FMT_GRAY8,      AV_PIX_FMT_GRAY16,    AV_PIX_FMT_YUV420P,   AV_PIX_FMT_YUV422P,
    AV_PIX_FMT_YUV444P,    AV_PIX_FMT_YUV410P,   AV_PIX_FMT_YUV411P,   AV_PIX_FMT_YUV440P,
    AV_PIX_FMT_YUV420P10,  AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV420P12,
    AV_PIX_FMT_YUV422P12,  AV_PIX_FMT_YUV444P12, AV_PIX_FMT_YUV420P16, AV_PIX_FMT_YUV422P16,
    AV_PIX_FMT_YUV444P16,  AV_PIX_FMT_YUVA420P,  AV_PIX_FMT_YUVA422P,  AV_PIX_FMT_YUVA444P,
    AV_PIX_FMT_YUVA444P16, AV_PIX_FMT_GBRP,      AV_PIX_FMT_GBRP10,    AV_PIX_FMT_GBRP12,
    AV_PIX_FMT_GBRP16,     AV_PIX_FMT_GBRAP,     AV_PIX_FMT_GBRAP16,   AV_PIX_FMT_NONE,
};

int ceilShift(int value, int shift) {
    return (value + (1 << shift) - 1) >> shift;
}

std::ptrdiff_t alignedStride(int bytes) {
    constexpr auto a = std::ptrdiff_t(PlanarPicture::alignment);
    return (bytes + a - 1) / a * a;
}

bool isChroma(int plane) {
    return plane == 1 || plane == 2;
}

bool isPlanar(AVPixelFormat format) {
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    constexpr std::uint64_t others = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                                     AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER |
                                     AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_FLOAT;
    if ((description.flags & others) != 0 || description.nb_components == 2)
        return false;
    for (int i = 0; i < description.nb_components; ++i) {
        const AVComponentDescriptor& component = description.comp[i];
        const int bytes = component.depth > 8 ? 2 : 1;
        if (component.step != bytes || component.shift != 0 || component.offset != 0)
            return false;
    }
    return av_pix_fmt_count_planes(format) == description.nb_components;
}

/// The frame's plane that holds the library's plane `plane`: R, G, B, A where FFmpeg has G, B, R,
/// A.
int sourcePlane(bool isRgb, int plane) {
    constexpr std::array order = {2, 0, 1, 3};
    return isRgb ? order[std::size_t(plane)] : plane;
}

bool isAligned(const void* data, std::ptrdiff_t stride) {
    constexpr auto a = PlanarPicture::alignment;
    return reinterpret_cast<std::uintptr_t>(data) % a == 0 && stride > 0 &&
           std::size_t(stride) % a == 0;
}

/// True for palettes and for interleaved R, G, B and A of a byte each, which `unpacked` takes
/// apart.
bool isPackedRgb(const AVPixFmtDescriptor& format) {
    if ((format.flags & AV_PIX_FMT_FLAG_PAL) != 0)
        return true;
    constexpr std::uint64_t others =
        AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;
    if ((format.flags & AV_PIX_FMT_FLAG_RGB) == 0 || (format.flags & others) != 0)
        return false;
    return std::all_of(format.comp, format.comp + format.nb_components,
                       [](const AVComponentDescriptor& component) {
                           return component.depth == 8 && component.shift == 0;
                       });
}

libav::Frame makePlanar(const AVFrame& frame, AVPixelFormat planar) {
    libav::Frame result = libav::makeFrame();
    result->format = planar;
    result->width = frame.width;
    result->height = frame.height;
    if (av_frame_get_buffer(result.get(), int(PlanarPicture::alignment)) < 0)
        throw std::bad_alloc();
    return result;
}

/// Replaces a row of palette indices by one component of their colours.
void lookUp(std::uint8_t* row, const AVFrame& frame, int component) {
    constexpr std::array shifts = {16U, 8U, 0U, 24U}; // of R, G, B, A in the palette's words
    for (int x = 0; x < frame.width; ++x) {
        std::uint32_t color = 0;
        std::memcpy(&color, frame.data[1] + std::ptrdiff_t(4) * row[x], sizeof color);
        row[x] = std::uint8_t(color >> shifts[std::size_t(component)]);
    }
}

/// Colours of a byte per channel taken apart, which the scaler does only roughly.
libav::Frame unpacked(const AVFrame& frame, const AVPixFmtDescriptor& format,
                      AVPixelFormat planar) {
    libav::Frame result = makePlanar(frame, planar);
    const bool isPalette = (format.flags & AV_PIX_FMT_FLAG_PAL) != 0;
    const int components = av_pix_fmt_desc_get(planar)->nb_components;
    for (int component = 0; component < components; ++component) {
        const AVComponentDescriptor& place = format.comp[isPalette ? 0 : component];
        const int plane = sourcePlane(true, component);
        for (int y = 0; y < frame.height; ++y) {
            const std::uint8_t* from =
                frame.data[place.plane] + std::ptrdiff_t(frame.linesize[place.plane]) * y;
            std::uint8_t* to = result->data[plane] + std::ptrdiff_t(result->linesize[plane]) * y;
            for (int x = 0; x < frame.width; ++x)
                to[x] = from[std::ptrdiff_t(place.step) * x + place.offset];
            if (isPalette)
                lookUp(to, frame, component);
        }
    }
    return result;
}

/// Copies rows and continues the last sample and the last row to the size of `to`.
void copyContinued(const std::uint8_t* from, std::ptrdiff_t stride, int width, int height,
                   const PlanarPicture& to, int plane) {
    const int bytes = to.layout().bytesPerSample;
    const int fullWidth = to.layout().widthOf(plane);
    for (int y = 0; y < to.layout().heightOf(plane); ++y) {
        std::uint8_t* row = to.row(plane, y);
        std::memcpy(row, from + stride * std::min(y, height - 1),
                    std::size_t(width) * std::size_t(bytes));
        for (int x = width; x < fullWidth; ++x)
            std::memcpy(row + x * bytes, row + (width - 1) * bytes, std::size_t(bytes));
    }
}

} // namespace

int PlanarPicture::Layout::widthOf(int plane) const noexcept {
    return isChroma(plane) ? ceilShift(width, chromaShiftX) : width;
}

int PlanarPicture::Layout::heightOf(int plane) const noexcept {
    return isChroma(plane) ? ceilShift(height, chromaShiftY) : height;
}

PlanarPicture::PlanarPicture(const Layout& layout) : m_layout(layout) {
    std::size_t size = 0;
    std::array<std::size_t, 4> offset{};
    for (int plane = 0; plane < layout.planes; ++plane) {
        m_stride[std::size_t(plane)] = alignedStride(layout.widthOf(plane) * layout.bytesPerSample);
        offset[std::size_t(plane)] = size;
        size += std::size_t(m_stride[std::size_t(plane)]) * std::size_t(layout.heightOf(plane));
    }
    void* memory = std::aligned_alloc(alignment, std::max(size, alignment));
    if (!memory)
        throw std::bad_alloc();
    m_owner = std::shared_ptr<const void>(memory, [memory](const void*) { std::free(memory); });
    for (std::size_t plane = 0; plane < std::size_t(layout.planes); ++plane)
        m_data[plane] = static_cast<std::uint8_t*>(memory) + offset[plane];
}

PlanarPicture PlanarPicture::of(const AVFrame& frame) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
    const bool isRgb = (format.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    Layout layout;
    layout.planes = format.nb_components;
    layout.bytesPerSample = format.comp[0].depth > 8 ? 2 : 1;
    layout.chromaShiftX = format.log2_chroma_w;
    layout.chromaShiftY = format.log2_chroma_h;
    layout.width = ceilShift(frame.width, format.log2_chroma_w) << format.log2_chroma_w;
    layout.height = ceilShift(frame.height, format.log2_chroma_h) << format.log2_chroma_h;
    bool isUsable = layout.width == frame.width && layout.height == frame.height;
    for (int plane = 0; plane < layout.planes; ++plane)
        isUsable = isUsable && isAligned(frame.data[plane], frame.linesize[plane]);
    if (!isUsable) {
        PlanarPicture copy(layout);
        for (int plane = 0; plane < layout.planes; ++plane) {
            const int source = sourcePlane(isRgb, plane);
            const bool chroma = isChroma(plane);
            copyContinued(frame.data[source], frame.linesize[source],
                          chroma ? ceilShift(frame.width, format.log2_chroma_w) : frame.width,
                          chroma ? ceilShift(frame.height, format.log2_chroma_h) : frame.height,
                          copy, plane);
        }
        return copy;
    }
    PlanarPicture picture;
    picture.m_layout = layout;
    for (int plane = 0; plane < layout.planes; ++plane) {
        const int source = sourcePlane(isRgb, plane);
        picture.m_data[std::size_t(plane)] = frame.data[source];
        picture.m_stride[std::size_t(plane)] = frame.linesize[source];
    }
    AVFrame* reference = av_frame_clone(&frame);
    if (!reference)
        throw std::bad_alloc();
    picture.m_owner = std::shared_ptr<const void>(
        reference, [reference](const void*) { libav::Deleter()(reference); });
    return picture;
}

PlanarPicture PlanarPicture::field(int parity) const {
    PlanarPicture half = *this;
    half.m_layout.height /= 2;
    for (std::size_t plane = 0; plane < std::size_t(m_layout.planes); ++plane) {
        half.m_data[plane] += m_stride[plane] * parity;
        half.m_stride[plane] *= 2;
    }
    return half;
}

PlanarPicture PlanarPicture::cropped(int width, int height) const {
    PlanarPicture part = *this;
    part.m_layout.width = width;
    part.m_layout.height = height;
    return part;
}

AVPixelFormat planarFormatFor(AVPixelFormat format) {
    if (isPlanar(format))
        return format;
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    const bool hasAlpha = (description.flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0;
    if (isPackedRgb(description))
        return hasAlpha ? AV_PIX_FMT_GBRAP : AV_PIX_FMT_GBRP;
    int loss = 0;
    return avcodec_find_best_pix_fmt_of_list(planarFormats.data(), format, hasAlpha ? 1 : 0, &loss);
}

libav::Frame toPlanar(const AVFrame& frame) {
    const auto format = AVPixelFormat(frame.format);
    const AVPixelFormat planar = planarFormatFor(format);
    if (planar == format)
        return libav::checked(libav::Frame(av_frame_clone(&frame)));
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    if (isPackedRgb(description))
        return unpacked(frame, description, planar);
    libav::Frame result = makePlanar(frame, planar);
    const libav::Scaler scaler(
        sws_getContext(frame.width, frame.height, format, frame.width, frame.height, planar,
                       SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT,
                       nullptr, nullptr, nullptr));
    if (!scaler || sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height,
                             result->data, result->linesize) != frame.height)
        throw MediaError::make(MediaError::Category::Unsupported,
                               QString::fromUtf8(av_get_pix_fmt_name(format)));
    return result;
}

} // namespace stillwick
