#include "Media/PlaneConversion.h"

#include "Media/MediaError.h"

#include <zimg.h>

#include <array>

namespace stillwick {

namespace {

[[noreturn]] void throwLibraryError() {
    std::array<char, 512> text{};
    zimg_get_last_error(text.data(), text.size());
    throw MediaError::make(MediaError::Category::Unsupported, QString::fromUtf8(text.data()));
}

zimg_chroma_location_e chromaLocation(AVChromaLocation location) {
    switch (location) {
    case AVCHROMA_LOC_CENTER:
        return ZIMG_CHROMA_CENTER;
    case AVCHROMA_LOC_TOPLEFT:
        return ZIMG_CHROMA_TOP_LEFT;
    case AVCHROMA_LOC_TOP:
        return ZIMG_CHROMA_TOP;
    case AVCHROMA_LOC_BOTTOMLEFT:
        return ZIMG_CHROMA_BOTTOM_LEFT;
    case AVCHROMA_LOC_BOTTOM:
        return ZIMG_CHROMA_BOTTOM;
    default:
        return ZIMG_CHROMA_LEFT;
    }
}

zimg_field_parity_e fieldParity(PlaneFormat::Rows rows) {
    switch (rows) {
    case PlaneFormat::Rows::TopField:
        return ZIMG_FIELD_TOP;
    case PlaneFormat::Rows::BottomField:
        return ZIMG_FIELD_BOTTOM;
    case PlaneFormat::Rows::All:
        break;
    }
    return ZIMG_FIELD_PROGRESSIVE;
}

zimg_pixel_type_e pixelType(const PlaneFormat& format) {
    if (format.samples == PlaneFormat::Samples::Float)
        return ZIMG_PIXEL_FLOAT;
    return format.layout.bytesPerSample == 1 ? ZIMG_PIXEL_BYTE : ZIMG_PIXEL_WORD;
}

zimg_color_family_e colorFamily(const PlaneFormat& format) {
    if (format.isGrey)
        return ZIMG_COLOR_GREY;
    return format.color.matrix == AVCOL_SPC_RGB ? ZIMG_COLOR_RGB : ZIMG_COLOR_YUV;
}

// zimg and FFmpeg both use the code points of ITU-T H.273.
zimg_image_format describe(const PlaneFormat& format) {
    zimg_image_format result;
    zimg_image_format_default(&result, ZIMG_API_VERSION);
    result.width = unsigned(format.layout.width);
    result.height = unsigned(format.layout.height);
    result.pixel_type = pixelType(format);
    result.subsample_w = unsigned(format.layout.chromaShiftX);
    result.subsample_h = unsigned(format.layout.chromaShiftY);
    result.color_family = colorFamily(format);
    result.matrix_coefficients = zimg_matrix_coefficients_e(format.color.matrix);
    result.transfer_characteristics = zimg_transfer_characteristics_e(format.color.transfer);
    result.color_primaries = zimg_color_primaries_e(format.color.primaries);
    result.depth = unsigned(format.depth);
    result.pixel_range = format.color.isFullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    result.field_parity = fieldParity(format.rows);
    result.chroma_location = chromaLocation(format.color.chromaLocation);
    result.alpha = format.hasAlpha() ? ZIMG_ALPHA_STRAIGHT : ZIMG_ALPHA_NONE;
    return result;
}

template <typename Buffer>
Buffer bufferOf(const PlanarPicture& picture, unsigned mask = ZIMG_BUFFER_MAX) {
    Buffer buffer{};
    buffer.version = ZIMG_API_VERSION;
    for (int plane = 0; plane < picture.layout().planes; ++plane) {
        auto& target = buffer.plane[picture.layout().planes == 1 ? 0 : plane];
        target.data = picture.data(plane);
        target.stride = picture.stride(plane);
        target.mask = mask;
    }
    return buffer;
}

} // namespace

/// Rows come into a ring and go out of it.
struct PlaneConversion::RowTaker {
    const PlanarPicture& ring;
    unsigned mask;
    const RowHandler& take;

    static int onRow(void* user, unsigned y, unsigned left, unsigned right) noexcept {
        const auto& self = *static_cast<const RowTaker*>(user);
        self.take(int(y), int(left), int(right), self.ring.rowsAt(int(y & self.mask)));
        return 0;
    }
};

struct PlaneConversion::Graph {
    zimg_filter_graph* graph = nullptr;
    PlanarPicture::Layout target;
    std::size_t scratchSize = 0;
    ~Graph() { zimg_filter_graph_free(graph); }
    Graph() = default;
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;
};

PlaneFormat PlaneFormat::rgb(int width, int height, bool hasAlpha) {
    PlaneFormat format;
    format.layout.width = width;
    format.layout.height = height;
    format.layout.planes = hasAlpha ? 4 : 3;
    format.color.matrix = AVCOL_SPC_RGB;
    format.color.isFullRange = true;
    return format;
}

PlaneFormat PlaneFormat::of(const PlanarPicture& picture, const AVFrame& frame,
                            const ColorDescription& color) {
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
    PlaneFormat format;
    format.layout = picture.layout();
    format.depth = description.comp[0].depth;
    format.color = color;
    format.isGrey = description.nb_components < 3;
    if ((description.flags & AV_PIX_FMT_FLAG_RGB) != 0)
        format.color.matrix = AVCOL_SPC_RGB;
    return format;
}

PlaneConversion::PlaneConversion(const PlaneFormat& from, const PlaneFormat& to,
                                 double diffuseWhite)
    : m_graph(std::make_unique<Graph>()) {
    const zimg_image_format source = describe(from);
    const zimg_image_format target = describe(to);
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = ZIMG_RESIZE_LANCZOS;
    parameters.filter_param_a = 3;
    parameters.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
    parameters.filter_param_a_uv = 0;   // Catmull-Rom: interpolates, does not blur
    parameters.filter_param_b_uv = 0.5; // NOLINT(*-magic-numbers)
    parameters.dither_type = ZIMG_DITHER_NONE;
    parameters.nominal_peak_luminance = diffuseWhite;
    parameters.cpu_type = ZIMG_CPU_AUTO_64B;
    m_graph->graph = zimg_filter_graph_build(&source, &target, &parameters);
    if (!m_graph->graph ||
        zimg_filter_graph_get_tmp_size(m_graph->graph, &m_graph->scratchSize) != ZIMG_ERROR_SUCCESS)
        throwLibraryError();
    m_graph->target = to.layout;
}

PlaneConversion::~PlaneConversion() = default;
PlaneConversion::PlaneConversion(PlaneConversion&&) noexcept = default;
PlaneConversion& PlaneConversion::operator=(PlaneConversion&&) noexcept = default;

void PlaneConversion::convert(const PlanarPicture& from, const PlanarPicture& to) const {
    process(from, bufferOf<zimg_image_buffer>(to), nullptr);
}

void PlaneConversion::convertByRows(const PlanarPicture& from, const RowHandler& take) const {
    unsigned rows = 0;
    if (zimg_filter_graph_get_output_buffering(m_graph->graph, &rows) != ZIMG_ERROR_SUCCESS)
        throwLibraryError();
    const unsigned mask = zimg_select_buffer_mask(rows);
    PlanarPicture::Layout layout = m_graph->target;
    if (mask != ZIMG_BUFFER_MAX)
        layout.height = int(mask) + 1;
    const PlanarPicture ring(layout);
    RowTaker taker{ring, mask, take};
    process(from, bufferOf<zimg_image_buffer>(ring, mask), &taker);
}

void PlaneConversion::process(const PlanarPicture& from, const zimg_image_buffer& to,
                              RowTaker* taker) const {
    const auto source = bufferOf<zimg_image_buffer_const>(from);
    PlanarPicture::Layout scratch;
    scratch.width = int(m_graph->scratchSize);
    scratch.height = 1;
    scratch.planes = 1;
    const PlanarPicture memory(scratch);
    if (zimg_filter_graph_process(m_graph->graph, &source, &to, memory.data(0), nullptr, nullptr,
                                  taker ? &RowTaker::onRow : nullptr, taker) != ZIMG_ERROR_SUCCESS)
        throwLibraryError();
}

} // namespace stillwick
