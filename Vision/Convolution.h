// A convolution with its weights. Internal to Vision. Immutable value, any thread.
#pragma once

#include "Vision/FeatureMap.h"
#include "Vision/NumpyArchive.h"

#include <memory>
#include <optional>
#include <string>

namespace stillwick {

/// What follows the sums of a convolution.
enum class Rectifier { None, Rectified };

/// A square kernel over all channels, with what normalisation follows it folded in.
class Convolution final {
public:
    struct Form {
        int stride = 1;
        int dilation = 1;
    };

    /// The convolution whose weights are called `name`, with its bias or with the normalisation
    /// `norm` behind it; none where the archive does not hold all that, in matching shapes.
    [[nodiscard]] static std::optional<Convolution>
    read(const NumpyArchive& archive, const std::string& name, const std::string& norm, Form form);

    [[nodiscard]] int inputs() const { return m_inputs; }
    [[nodiscard]] int outputs() const { return m_outputs; }

    /// The result with a border of `border` zeros. `added`, of the result's size, is added before
    /// the rectifier. *Shape*: the input's border is at least the dilation where the kernel is
    /// wider than 1.
    [[nodiscard]] FeatureMap of(const FeatureMap& features, Rectifier rectifier, int border,
                                const FeatureMap* added = nullptr) const;

private:
    Convolution() = default;
    void pack(const NumberArray& weights, const std::vector<float>& scale);

    Form m_form;
    int m_inputs = 0;
    int m_outputs = 0;
    int m_kernel = 0;
    // In the order of ConvolutionTask; whole blocks, the rest zeros.
    std::vector<float> m_weights;
    std::vector<float> m_bias;
};

} // namespace stillwick
