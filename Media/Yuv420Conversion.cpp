#include "Media/Yuv420Conversion.h"

#include <algorithm>
#include <optional>

namespace stillwick {

namespace {

/// How much red and blue weigh in luma. *Source*: ITU-T H.273, table 4.
struct LumaWeights {
    double red = 0;
    double blue = 0;
};

std::optional<LumaWeights> lumaWeightsOf(AVColorSpace matrix) {
    switch (matrix) {
    case AVCOL_SPC_BT709:
        return LumaWeights{0.2126, 0.0722};
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        return LumaWeights{0.299, 0.114};
    case AVCOL_SPC_BT2020_NCL:
        return LumaWeights{0.2627, 0.0593};
    default:
        return std::nullopt;
    }
}

Yuv420Matrix matrixFor(const PlaneFormat& format) {
    const LumaWeights weights = *lumaWeightsOf(format.color.matrix);
    const double green = 1 - weights.red - weights.blue;
    const bool isFull = format.color.isFullRange;
    const double step = 1 << (format.depth - 8); // of a level, in samples
    const double white = (1 << format.depth) - 1;
    const double luma = 255 / (isFull ? white : 219 * step);
    // Chroma comes in 2048ths of a sample.
    const double chroma = 255 / (isFull ? white : 224 * step) / 2048;
    const double grey = 2048 * 128 * step;
    const double redOfCr = 2 * (1 - weights.red) * chroma;
    const double blueOfCb = 2 * (1 - weights.blue) * chroma;
    const double greenOfCb = -blueOfCb * weights.blue / green;
    const double greenOfCr = -redOfCr * weights.red / green;
    const double black = 0.5 - (isFull ? 0 : 16 * step * luma);
    return {float(luma),
            float(black - grey * redOfCr),
            float(black - grey * (greenOfCb + greenOfCr)),
            float(black - grey * blueOfCb),
            float(redOfCr),
            float(greenOfCb),
            float(greenOfCr),
            float(blueOfCb)};
}

/// Beyond its edges a plane is mirrored.
int mirrored(int row, int rows) {
    const int inside = row < 0 ? -1 - row : row >= rows ? 2 * rows - 1 - row : row;
    return std::clamp(inside, 0, rows - 1);
}

} // namespace

bool Yuv420Conversion::isFor(const PlaneFormat& format) {
    constexpr int maximumDepth = 12;
    const ColorDescription rgb = PlaneFormat::rgb(1, 1, false).color;
    const PlanarPicture::Layout& layout = format.layout;
    return hasFastYuv420Rows() && layout.planes == 3 && layout.chromaShiftX == 1 &&
           layout.chromaShiftY == 1 && format.samples == PlaneFormat::Samples::Integer &&
           format.rows == PlaneFormat::Rows::All && format.depth <= maximumDepth &&
           format.color.chromaLocation == AVCHROMA_LOC_LEFT &&
           format.color.transfer == rgb.transfer && format.color.primaries == rgb.primaries &&
           lumaWeightsOf(format.color.matrix).has_value();
}

Yuv420Conversion::Yuv420Conversion(const PlaneFormat& format)
    : m_layout(format.layout), m_matrix(matrixFor(format)),
      m_scratch(scratchFor(format.layout.width)) {}

void Yuv420Conversion::convert(const PlanarPicture& picture, int width, int height,
                               std::uint8_t* out, std::ptrdiff_t stride) {
    if (m_layout.bytesPerSample == 1)
        convertRows<std::uint8_t>(picture, width, height, out, stride);
    else
        convertRows<std::uint16_t>(picture, width, height, out, stride);
}

template <typename Sample>
void Yuv420Conversion::convertRows(const PlanarPicture& picture, int width, int height,
                                   std::uint8_t* out, std::ptrdiff_t stride) {
    const auto rowOf = [&picture](int plane, int y) {
        return reinterpret_cast<const Sample*>(picture.row(plane, y));
    };
    const int chromaRows = picture.layout().heightOf(1);
    Yuv420Row<Sample> row;
    row.width = width;
    for (int y = 0; y < height; ++y) {
        // Even rows lie three quarters of the way between two rows of chroma, odd ones a quarter.
        const bool isOdd = y % 2 != 0;
        row.weights = isOdd ? std::array<std::int16_t, 4>{-9, 111, 29, -3}
                            : std::array<std::int16_t, 4>{-3, 29, 111, -9};
        for (int i = 0; i < 4; ++i) {
            const int chromaRow = mirrored(y / 2 + i - (isOdd ? 1 : 2), chromaRows);
            row.cb[std::size_t(i)] = rowOf(1, chromaRow);
            row.cr[std::size_t(i)] = rowOf(2, chromaRow);
        }
        row.luma = rowOf(0, y);
        convertRow(row, m_matrix, m_scratch.data(), out + stride * y);
    }
}

} // namespace stillwick
