// One convolution as its inner loops see it. Internal to Vision. Plain value.
#pragma once

#include <cstddef>

namespace stillwick {

/// Places of memory and distances in it, in floats; channels in blocks of sixteen.
struct ConvolutionTask {
    /// The value under the kernel's first corner at the result's first place.
    const float* in = nullptr;
    std::ptrdiff_t inRowStride = 0;
    std::ptrdiff_t inBlockStride = 0;
    int inChannels = 0;
    int inBlocks = 0;
    /// By block of the result: block, row, column and channel of the input, then sixteen channels
    /// of the result.
    const float* weights = nullptr;
    std::ptrdiff_t weightStride = 0;
    const float* bias = nullptr;
    int kernel = 0;
    int stride = 0;
    int dilation = 0;
    /// Added to the sums; null where there is nothing to add.
    const float* added = nullptr;
    std::ptrdiff_t addedRowStride = 0;
    std::ptrdiff_t addedBlockStride = 0;
    bool rectified = false;
    float* out = nullptr;
    std::ptrdiff_t outRowStride = 0;
    std::ptrdiff_t outBlockStride = 0;
    int outBlocks = 0;
    int width = 0;
    int height = 0;
};

/// The convolution with what every processor can do.
void convolvePlain(const ConvolutionTask& task);
/// The same for processors with AVX2 and FMA, and with AVX-512F.
void convolveAvx2(const ConvolutionTask& task);
void convolveAvx512(const ConvolutionTask& task);

} // namespace stillwick
