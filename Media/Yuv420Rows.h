// Rows of pictures whose chroma has half the luma's width and height, into RGBA. Free functions,
// any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace stillwick {

/// R, G and B as sums of luma and of chroma in units of 1/2048 of a sample's step; half a level is
/// in the constants, for rounding.
struct Yuv420Matrix {
    float luma = 0; ///< what a step of luma adds to each
    float red = 0;  ///< constant
    float green = 0;
    float blue = 0;
    float redOfCr = 0;
    float greenOfCb = 0;
    float greenOfCr = 0;
    float blueOfCb = 0;
};

/// What one row of pixels is made of. Chroma samples lie on the luma samples of even columns, and
/// half-way between two rows.
/// *Source*: Catmull-Rom interpolation; at quarters and halves its weights are whole 128ths and
/// 16ths, so that all chroma is exact before the matrix is applied.
template <typename Sample>
struct Yuv420Row {
    const Sample* luma = nullptr;
    std::array<const Sample*, 4> cb{}; ///< the four chroma rows around the row of pixels
    std::array<const Sample*, 4> cr{};
    std::array<std::int16_t, 4> weights{}; ///< of the four, in 128ths
    int width = 0;                         ///< in pixels
};

/// True where the machine's instructions make `convertRow` faster than the general conversion;
/// elsewhere it is much slower, and gives the same.
[[nodiscard]] bool hasFastYuv420Rows();

/// Floats of working memory that a row of `width` pixels needs.
[[nodiscard]] constexpr std::size_t scratchFor(int width) {
    constexpr std::size_t margins = 16; // mirrored samples, and a vector's length
    return 2 * (std::size_t(width) / 2 + 1 + margins);
}

/// Writes `width` pixels: R, G, B and an alpha of 255, a byte each. Samples have 8 to 12 bits.
void convertRow(const Yuv420Row<std::uint8_t>& row, const Yuv420Matrix& matrix, float* scratch,
                std::uint8_t* out);
void convertRow(const Yuv420Row<std::uint16_t>& row, const Yuv420Matrix& matrix, float* scratch,
                std::uint8_t* out);

} // namespace stillwick
