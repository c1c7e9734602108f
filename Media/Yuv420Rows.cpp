#include "Media/Yuv420Rows.h"

#include <algorithm>
#include <utility>

#if defined(__x86_64__) && defined(__GNUC__)
#define STILLWICK_HAS_AVX2
#include <immintrin.h>
#endif

// This unit is compiled without contraction of floating-point operations: a fused multiplication
// and addition rounds once instead of twice, and pictures would depend on the machine.

namespace stillwick {

namespace {

constexpr std::size_t marginBefore = 8; // floats before a row of chroma, of which one is used

/// A row of chroma, interpolated between rows, in 128ths; a few samples beyond both ends can be
/// read.
struct ChromaRows {
    float* cb = nullptr;
    float* cr = nullptr;
    int width = 0;
};

ChromaRows chromaRowsIn(float* scratch, int width) {
    return {scratch + marginBefore, scratch + scratchFor(width) / 2 + marginBefore,
            (width + 1) / 2};
}

/// Beyond its ends a row is mirrored.
void extend(float* row, int width) {
    row[-1] = row[0];
    row[width] = row[width - 1];
    row[width + 1] = row[std::max(0, width - 2)];
}

// In portable code.

template <typename Sample>
void interpolateRows(const std::array<const Sample*, 4>& rows,
                     const std::array<std::int16_t, 4>& weights, float* out, int from, int to) {
    for (int x = from; x < to; ++x) {
        int sum = 0;
        for (std::size_t i = 0; i < rows.size(); ++i)
            sum += weights[i] * rows[i][x];
        out[x] = float(sum);
    }
}

std::uint8_t toByte(float value) {
    return std::uint8_t(std::clamp(value, 0.0F, 255.0F));
}

void writePixel(float luma, float cb, float cr, const Yuv420Matrix& m, std::uint8_t* out) {
    out[0] = toByte((luma + m.red) + m.redOfCr * cr);
    out[1] = toByte((luma + m.green) + (m.greenOfCb * cb + m.greenOfCr * cr));
    out[2] = toByte((luma + m.blue) + m.blueOfCb * cb);
    out[3] = 255;
}

/// Half-way between two samples, in 2048ths.
float between(const float* row) {
    return 9 * (row[0] + row[1]) - (row[-1] + row[2]);
}

template <typename Sample>
void writePixels(const Yuv420Row<Sample>& row, const ChromaRows& chroma, const Yuv420Matrix& matrix,
                 std::uint8_t* out, int from) {
    for (int x = from; x < row.width; ++x) {
        const float* const cb = chroma.cb + x / 2;
        const float* const cr = chroma.cr + x / 2;
        const float luma = matrix.luma * float(row.luma[x]);
        std::uint8_t* const pixel = out + std::ptrdiff_t(4) * x;
        if (x % 2 == 0)
            writePixel(luma, 16 * *cb, 16 * *cr, matrix, pixel);
        else
            writePixel(luma, between(cb), between(cr), matrix, pixel);
    }
}

#ifdef STILLWICK_HAS_AVX2

// With vectors of eight, in the same order of operations. What is left over at the end of a row is
// done by the portable code.

#define STILLWICK_AVX2 [[gnu::target("avx2"), gnu::always_inline]] inline

constexpr int lanes = 8;

/// The samples of two rows in turns, as 16 bits.
STILLWICK_AVX2 __m256i inTurns(const std::uint8_t* a, const std::uint8_t* b) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(a));
    const __m128i second = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(b));
    return _mm256_cvtepu8_epi16(_mm_unpacklo_epi8(first, second));
}

STILLWICK_AVX2 __m256i inTurns(const std::uint16_t* a, const std::uint16_t* b) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
    const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
    return _mm256_set_m128i(_mm_unpackhi_epi16(first, second), _mm_unpacklo_epi16(first, second));
}

STILLWICK_AVX2 __m256i pairOf(std::int16_t first, std::int16_t second) {
    return _mm256_set1_epi32(int(std::uint16_t(first)) | int(second) * (1 << 16));
}

template <typename Sample>
STILLWICK_AVX2 int interpolateVectors(const std::array<const Sample*, 4>& rows,
                                      const std::array<std::int16_t, 4>& weights, float* out,
                                      int width) {
    const __m256i upper = pairOf(weights[0], weights[1]);
    const __m256i lower = pairOf(weights[2], weights[3]);
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const __m256i sum =
            _mm256_add_epi32(_mm256_madd_epi16(inTurns(rows[0] + x, rows[1] + x), upper),
                             _mm256_madd_epi16(inTurns(rows[2] + x, rows[3] + x), lower));
        _mm256_storeu_ps(out + x, _mm256_cvtepi32_ps(sum));
    }
    return x;
}

struct VectorPair {
    __m256 even;
    __m256 odd;
};

STILLWICK_AVX2 VectorPair lumaAt(const std::uint8_t* samples) {
    const __m256i pairs =
        _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(samples)));
    return {_mm256_cvtepi32_ps(_mm256_and_si256(pairs, _mm256_set1_epi32(0xff))),
            _mm256_cvtepi32_ps(_mm256_srli_epi32(pairs, 8))};
}

STILLWICK_AVX2 VectorPair lumaAt(const std::uint16_t* samples) {
    const __m256i pairs = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples));
    return {_mm256_cvtepi32_ps(_mm256_and_si256(pairs, _mm256_set1_epi32(0xffff))),
            _mm256_cvtepi32_ps(_mm256_srli_epi32(pairs, 16))};
}

STILLWICK_AVX2 VectorPair chromaAt(const float* row) {
    const __m256 here = _mm256_loadu_ps(row);
    const __m256 near = _mm256_add_ps(here, _mm256_loadu_ps(row + 1));
    const __m256 far = _mm256_add_ps(_mm256_loadu_ps(row - 1), _mm256_loadu_ps(row + 2));
    return {_mm256_mul_ps(_mm256_set1_ps(16), here),
            _mm256_sub_ps(_mm256_mul_ps(_mm256_set1_ps(9), near), far)};
}

STILLWICK_AVX2 __m256i pixelsOf(__m256 luma, __m256 cb, __m256 cr, const Yuv420Matrix& m) {
    const __m256 red = _mm256_add_ps(_mm256_add_ps(luma, _mm256_set1_ps(m.red)),
                                     _mm256_mul_ps(_mm256_set1_ps(m.redOfCr), cr));
    const __m256 green =
        _mm256_add_ps(_mm256_add_ps(luma, _mm256_set1_ps(m.green)),
                      _mm256_add_ps(_mm256_mul_ps(_mm256_set1_ps(m.greenOfCb), cb),
                                    _mm256_mul_ps(_mm256_set1_ps(m.greenOfCr), cr)));
    const __m256 blue = _mm256_add_ps(_mm256_add_ps(luma, _mm256_set1_ps(m.blue)),
                                      _mm256_mul_ps(_mm256_set1_ps(m.blueOfCb), cb));
    // Packing saturates: below 0 is 0, above 255 is 255.
    const __m256i redGreen =
        _mm256_packs_epi32(_mm256_cvttps_epi32(red), _mm256_cvttps_epi32(green));
    const __m256i blueAlpha = _mm256_packs_epi32(_mm256_cvttps_epi32(blue), _mm256_set1_epi32(255));
    const __m256i interleaved = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
    return _mm256_shuffle_epi8(_mm256_packus_epi16(redGreen, blueAlpha), interleaved);
}

STILLWICK_AVX2 void store(__m256i pixels, std::uint8_t* out) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), pixels);
}

template <typename Sample>
STILLWICK_AVX2 int writeVectors(const Yuv420Row<Sample>& row, const ChromaRows& chroma,
                                const Yuv420Matrix& matrix, std::uint8_t* out) {
    int x = 0;
    for (; x + 2 * lanes <= row.width; x += 2 * lanes) {
        VectorPair luma = lumaAt(row.luma + x);
        luma.even = _mm256_mul_ps(_mm256_set1_ps(matrix.luma), luma.even);
        luma.odd = _mm256_mul_ps(_mm256_set1_ps(matrix.luma), luma.odd);
        const VectorPair cb = chromaAt(chroma.cb + x / 2);
        const VectorPair cr = chromaAt(chroma.cr + x / 2);
        const __m256i even = pixelsOf(luma.even, cb.even, cr.even, matrix);
        const __m256i odd = pixelsOf(luma.odd, cb.odd, cr.odd, matrix);
        const __m256i low = _mm256_unpacklo_epi32(even, odd);
        const __m256i high = _mm256_unpackhi_epi32(even, odd);
        store(_mm256_permute2x128_si256(low, high, 0x20), out + std::ptrdiff_t(4) * x);
        store(_mm256_permute2x128_si256(low, high, 0x31), out + std::ptrdiff_t(4) * (x + lanes));
    }
    return x;
}

template <typename Sample>
[[gnu::target("avx2")]] int interpolateWithAvx2(const std::array<const Sample*, 4>& rows,
                                                const std::array<std::int16_t, 4>& weights,
                                                float* out, int width) {
    return interpolateVectors(rows, weights, out, width);
}

template <typename Sample>
[[gnu::target("avx2")]] int writeWithAvx2(const Yuv420Row<Sample>& row, const ChromaRows& chroma,
                                          const Yuv420Matrix& matrix, std::uint8_t* out) {
    return writeVectors(row, chroma, matrix, out);
}

#undef STILLWICK_AVX2

#else

template <typename... Arguments>
int interpolateWithAvx2(const Arguments&...) {
    return 0;
}

template <typename... Arguments>
int writeWithAvx2(const Arguments&...) {
    return 0;
}

#endif

template <typename Sample>
void convert(const Yuv420Row<Sample>& row, const Yuv420Matrix& matrix, float* scratch,
             std::uint8_t* out) {
    const bool hasVectors = hasFastYuv420Rows();
    const ChromaRows chroma = chromaRowsIn(scratch, row.width);
    for (const auto& [rows, target] :
         {std::pair(&row.cb, chroma.cb), std::pair(&row.cr, chroma.cr)}) {
        const int done =
            hasVectors ? interpolateWithAvx2(*rows, row.weights, target, chroma.width) : 0;
        interpolateRows(*rows, row.weights, target, done, chroma.width);
        extend(target, chroma.width);
    }
    const int done = hasVectors ? writeWithAvx2(row, chroma, matrix, out) : 0;
    writePixels(row, chroma, matrix, out, done);
}

} // namespace

bool hasFastYuv420Rows() {
#ifdef STILLWICK_HAS_AVX2
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

void convertRow(const Yuv420Row<std::uint8_t>& row, const Yuv420Matrix& matrix, float* scratch,
                std::uint8_t* out) {
    convert(row, matrix, scratch, out);
}

void convertRow(const Yuv420Row<std::uint16_t>& row, const Yuv420Matrix& matrix, float* scratch,
                std::uint8_t* out) {
    convert(row, matrix, scratch, out);
}

} // namespace stillwick
