// The inner loops of a convolution. Compiled once for each set of instructions, in the units
// ConvolutionPlain, ConvolutionAvx2 and ConvolutionAvx512, so that nothing here may be shared
// between them: templates are static, and no library is used. Internal to Vision.
//
// Each sum runs over blocks of channels, rows, columns and channels in this order, whatever the
// shape of the tile, so that a place's value does not depend on which tile it lies in.
#pragma once

#include "Vision/ConvolutionTask.h"

namespace stillwick {

template <int Lanes>
struct Vector {
    typedef float Type __attribute__((vector_size(4 * Lanes))); // NOLINT(modernize-use-using)
    typedef float Loose __attribute__((vector_size(4 * Lanes), aligned(4), may_alias)); // NOLINT
};

// Rows × Columns places of the result, Blocks blocks of sixteen channels each.
template <int Lanes, int Rows, int Columns, int Blocks, int Stride>
static void convolveTile(const ConvolutionTask& task, int outBlock, int y, int x) {
    using Values = typename Vector<Lanes>::Type;
    using Loose = typename Vector<Lanes>::Loose;
    constexpr int parts = 16 * Blocks / Lanes;
    Values sums[Rows][Columns][parts];
    for (int part = 0; part < parts; ++part) {
        const Values bias =
            *reinterpret_cast<const Loose*>(task.bias + 16 * outBlock + part * Lanes);
        for (int row = 0; row < Rows; ++row)
            for (int column = 0; column < Columns; ++column)
                sums[row][column][part] = bias;
    }
    const float* weights = task.weights + outBlock * task.weightStride;
    const float* corner = task.in + y * Stride * task.inRowStride + x * Stride * 16;
    for (int inBlock = 0; inBlock < task.inBlocks; ++inBlock) {
        const int channels =
            task.inChannels - 16 * inBlock < 16 ? task.inChannels - 16 * inBlock : 16;
        for (int ky = 0; ky < task.kernel; ++ky)
            for (int kx = 0; kx < task.kernel; ++kx) {
                const float* in = corner + inBlock * task.inBlockStride +
                                  ky * task.dilation * task.inRowStride + kx * task.dilation * 16;
                for (int channel = 0; channel < channels; ++channel) {
                    Values weight[parts];
                    for (int part = 0; part < parts; ++part)
                        weight[part] = *reinterpret_cast<const Loose*>(
                            weights + (part * Lanes / 16) * task.weightStride + channel * 16 +
                            part * Lanes % 16);
                    for (int row = 0; row < Rows; ++row)
                        for (int column = 0; column < Columns; ++column) {
                            const float value = in[row * Stride * task.inRowStride +
                                                   column * Stride * 16 + channel];
                            for (int part = 0; part < parts; ++part)
                                sums[row][column][part] += weight[part] * value;
                        }
                }
                weights += 16 * 16;
            }
    }
    for (int row = 0; row < Rows; ++row)
        for (int column = 0; column < Columns; ++column)
            for (int part = 0; part < parts; ++part) {
                const std::ptrdiff_t place = (outBlock + part * Lanes / 16) * task.outBlockStride +
                                             (y + row) * task.outRowStride + (x + column) * 16 +
                                             part * Lanes % 16;
                Values sum = sums[row][column][part];
                if (task.added != nullptr)
                    sum += *reinterpret_cast<const Loose*>(
                        task.added + (outBlock + part * Lanes / 16) * task.addedBlockStride +
                        (y + row) * task.addedRowStride + (x + column) * 16 + part * Lanes % 16);
                if (task.rectified)
                    sum = sum > 0 ? sum : Values{};
                *reinterpret_cast<Loose*>(task.out + place) = sum;
            }
}

// A run of `columns` places, at most Columns.
template <int Lanes, int Rows, int Columns, int Blocks, int Stride>
static void convolveRun(const ConvolutionTask& task, int outBlock, int y, int x, int columns) {
    if constexpr (Columns > 0) {
        if (columns == Columns)
            convolveTile<Lanes, Rows, Columns, Blocks, Stride>(task, outBlock, y, x);
        else
            convolveRun<Lanes, Rows, Columns - 1, Blocks, Stride>(task, outBlock, y, x, columns);
    }
}

// All places of Rows rows, in tiles of about the same width.
template <int Lanes, int Rows, int Columns, int Blocks, int Stride>
static void convolveRows(const ConvolutionTask& task, int outBlock, int y) {
    const int tiles = (task.width + Columns - 1) / Columns;
    for (int tile = 0; tile < tiles; ++tile) {
        const int from = task.width * tile / tiles;
        convolveRun<Lanes, Rows, Columns, Blocks, Stride>(task, outBlock, y, from,
                                                          task.width * (tile + 1) / tiles - from);
    }
}

template <int Lanes, int Columns, int Blocks, int Stride>
static void convolveBlocks(const ConvolutionTask& task, int outBlock) {
    constexpr int half = Columns / 2;
    int y = 0;
    // Narrow maps: two rows at a time, so that each weight serves as many places.
    if (task.width <= half)
        for (; y + 1 < task.height; y += 2)
            convolveRows<Lanes, 2, half, Blocks, Stride>(task, outBlock, y);
    for (; y < task.height; ++y)
        convolveRows<Lanes, 1, Columns, Blocks, Stride>(task, outBlock, y);
}

// `Columns` places of `Blocks` blocks fill the registers; a single block left over gets its own.
template <int Lanes, int Columns, int Blocks>
static void convolveAll(const ConvolutionTask& task) {
    int outBlock = 0;
    for (; outBlock + Blocks <= task.outBlocks; outBlock += Blocks) {
        if (task.stride == 1)
            convolveBlocks<Lanes, Columns, Blocks, 1>(task, outBlock);
        else
            convolveBlocks<Lanes, Columns, Blocks, 2>(task, outBlock);
    }
    if constexpr (Blocks > 1)
        for (; outBlock < task.outBlocks; ++outBlock) {
            if (task.stride == 1)
                convolveBlocks<Lanes, Columns, 1, 1>(task, outBlock);
            else
                convolveBlocks<Lanes, Columns, 1, 2>(task, outBlock);
        }
}

} // namespace stillwick
