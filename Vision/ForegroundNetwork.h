// The network that tells the subjects of a picture from its background; Training/ makes its
// weights. Internal to Vision. Immutable, any thread, several at a time.
#pragma once

#include "Vision/Convolution.h"

#include <opencv2/core.hpp>

#include <optional>
#include <span>
#include <stop_token>
#include <vector>

namespace stillwick {

/// A residual U-Net: Training/network.py has its form, the archive its widths and depths.
/// One question takes some megabytes and one thread.
class ForegroundNetwork final {
public:
    /// Pictures' sides are multiples of this.
    static constexpr int stride = 32;

    /// The network of a checkpoint; none where that is damaged or of another form.
    [[nodiscard]] static std::optional<ForegroundNetwork> read(std::span<const std::byte> weights);

    /// The side of the square pictures with which it was trained last.
    [[nodiscard]] int side() const { return m_side; }

    /// The log odds of subject.
    /// *Shape*: red, green, blue, 0 to 1; both sides multiples of `stride`; the result has the
    /// same. *Errors*: VisionError Cancelled soon after `stop`.
    [[nodiscard]] cv::Mat1f logOdds(const cv::Mat3f& picture, const std::stop_token& stop) const;

private:
    struct Residual {
        Convolution first;
        Convolution second;
        [[nodiscard]] FeatureMap of(const FeatureMap& features) const;
    };
    struct Downward {
        Convolution halving;
        std::vector<Residual> blocks;
    };
    struct Upward {
        Convolution reduce;
        Convolution lateral;
        Convolution merge;
    };

    friend class NetworkReader;

    ForegroundNetwork(Convolution wide, Convolution whole, Convolution finest)
        : m_wide(std::move(wide)), m_whole(std::move(whole)), m_finest(std::move(finest)) {}
    [[nodiscard]] FeatureMap context(FeatureMap features) const;

    int m_side = 0;
    std::vector<Downward> m_down;
    std::vector<Residual> m_context;
    Convolution m_wide;
    Convolution m_whole;
    std::vector<Upward> m_up;
    Convolution m_finest;
};

} // namespace stillwick
