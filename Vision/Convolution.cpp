#include "Vision/Convolution.h"

#include "Vision/ConvolutionTask.h"

#include <cmath>
#include <utility>

namespace stillwick {
namespace {

constexpr int block = FeatureMap::block;
// What torch adds to a variance.
constexpr double leastVariance = 1e-5;

using Kernel = void (*)(const ConvolutionTask&);

// The widest that this processor runs.
Kernel kernelOfProcessor() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512f"))
        return convolveAvx512;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        return convolveAvx2;
#endif
    return convolvePlain;
}

const NumberArray* vectorOf(const NumpyArchive& archive, const std::string& name, int length) {
    const NumberArray* found = archive.find(name);
    return found != nullptr && found->shape == std::vector{length} ? found : nullptr;
}

// What each output is multiplied by, and what is added to it.
struct Folded {
    std::vector<float> scale;
    std::vector<float> bias;
};

std::optional<Folded> foldedNorm(const NumpyArchive& archive, const std::string& norm,
                                 int outputs) {
    const NumberArray* weight = vectorOf(archive, norm + ".weight", outputs);
    const NumberArray* bias = vectorOf(archive, norm + ".bias", outputs);
    const NumberArray* mean = vectorOf(archive, norm + ".running_mean", outputs);
    const NumberArray* variance = vectorOf(archive, norm + ".running_var", outputs);
    if (weight == nullptr || bias == nullptr || mean == nullptr || variance == nullptr)
        return std::nullopt;
    Folded folded;
    for (std::size_t i = 0; i < weight->values.size(); ++i) {
        const double scale = weight->values[i] / std::sqrt(variance->values[i] + leastVariance);
        folded.scale.push_back(static_cast<float>(scale));
        folded.bias.push_back(static_cast<float>(bias->values[i] - mean->values[i] * scale));
    }
    return folded;
}

std::optional<Folded> foldedBias(const NumpyArchive& archive, const std::string& name,
                                 int outputs) {
    const NumberArray* bias = vectorOf(archive, name + ".bias", outputs);
    if (bias == nullptr)
        return std::nullopt;
    return Folded{std::vector<float>(bias->values.size(), 1.0F), bias->values};
}

int blocksOf(int channels) {
    return (channels + block - 1) / block;
}

} // namespace

std::optional<Convolution> Convolution::read(const NumpyArchive& archive, const std::string& name,
                                             const std::string& norm, Form form) {
    const NumberArray* weights = archive.find(name + ".weight");
    if (weights == nullptr || weights->shape.size() != 4 ||
        weights->shape[2] != weights->shape[3] || weights->shape[2] % 2 == 0)
        return std::nullopt;
    const int outputs = weights->shape[0];
    const auto folded =
        norm.empty() ? foldedBias(archive, name, outputs) : foldedNorm(archive, norm, outputs);
    if (!folded)
        return std::nullopt;
    Convolution result;
    result.m_form = form;
    result.m_outputs = outputs;
    result.m_inputs = weights->shape[1];
    result.m_kernel = weights->shape[2];
    result.m_bias = folded->bias;
    result.m_bias.resize(static_cast<std::size_t>(blocksOf(outputs)) * block, 0.0F);
    result.pack(*weights, folded->scale);
    return result;
}

void Convolution::pack(const NumberArray& weights, const std::vector<float>& scale) {
    const auto places = static_cast<std::size_t>(m_kernel) * static_cast<std::size_t>(m_kernel);
    const auto inputs = static_cast<std::size_t>(m_inputs);
    const auto inBlocks = static_cast<std::size_t>(blocksOf(m_inputs));
    constexpr std::size_t wide = block;
    m_weights.assign(
        static_cast<std::size_t>(blocksOf(m_outputs)) * inBlocks * places * wide * wide, 0.0F);
    for (std::size_t out = 0; out < scale.size(); ++out)
        for (std::size_t in = 0; in < inputs; ++in)
            for (std::size_t place = 0; place < places; ++place) {
                const std::size_t row =
                    ((out / wide * inBlocks + in / wide) * places + place) * wide + in % wide;
                m_weights[row * wide + out % wide] =
                    scale[out] * weights.values[(out * inputs + in) * places + place];
            }
}

FeatureMap Convolution::of(const FeatureMap& features, Rectifier rectifier, int border,
                           const FeatureMap* added) const {
    static const Kernel kernel = kernelOfProcessor();
    const int reach = m_form.dilation * (m_kernel / 2);
    CV_Assert(features.channels() == m_inputs && features.border() >= reach);
    const cv::Size size((features.size().width - 1) / m_form.stride + 1,
                        (features.size().height - 1) / m_form.stride + 1);
    FeatureMap result(m_outputs, size, border);
    ConvolutionTask task;
    task.in = features.at(0, -reach, -reach);
    task.inRowStride = static_cast<std::ptrdiff_t>(features.rowStride());
    task.inBlockStride = static_cast<std::ptrdiff_t>(features.blockStride());
    task.inChannels = m_inputs;
    task.inBlocks = features.blockCount();
    task.weights = m_weights.data();
    task.weightStride = static_cast<std::ptrdiff_t>(m_weights.size()) / result.blockCount();
    task.bias = m_bias.data();
    task.kernel = m_kernel;
    task.stride = m_form.stride;
    task.dilation = m_form.dilation;
    if (added != nullptr) {
        CV_Assert(added->size() == size && added->channels() == m_outputs);
        task.added = added->at(0, 0, 0);
        task.addedRowStride = static_cast<std::ptrdiff_t>(added->rowStride());
        task.addedBlockStride = static_cast<std::ptrdiff_t>(added->blockStride());
    }
    task.rectified = rectifier == Rectifier::Rectified;
    task.out = result.at(0, 0, 0);
    task.outRowStride = static_cast<std::ptrdiff_t>(result.rowStride());
    task.outBlockStride = static_cast<std::ptrdiff_t>(result.blockStride());
    task.outBlocks = result.blockCount();
    task.width = size.width;
    task.height = size.height;
    kernel(task);
    return result;
}

} // namespace stillwick
