// What the layers of the network hand on: features over the places of a picture. Internal to
// Vision. Plain value.
#pragma once

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <vector>

namespace stillwick {

/// Channels over a grid, in blocks of sixteen channels that lie side by side, with a border of
/// zeros around the grid; channels beyond the last are zeros too.
class FeatureMap final {
public:
    static constexpr int block = 16;

    FeatureMap() = default;
    FeatureMap(int channels, cv::Size size, int border)
        : m_channels(channels), m_size(size), m_border(border),
          m_values(static_cast<std::size_t>(blockCount()) * blockStride(), 0.0F) {}

    [[nodiscard]] int channels() const { return m_channels; }
    [[nodiscard]] int blockCount() const { return (m_channels + block - 1) / block; }
    [[nodiscard]] cv::Size size() const { return m_size; }
    [[nodiscard]] int border() const { return m_border; }
    /// *Units*: floats from one row, and from one block of channels, to the next.
    [[nodiscard]] std::size_t rowStride() const {
        return static_cast<std::size_t>(m_size.width + 2 * m_border) * block;
    }
    [[nodiscard]] std::size_t blockStride() const {
        return static_cast<std::size_t>(m_size.height + 2 * m_border) * rowStride();
    }
    /// The sixteen values of a place; `x` and `y` may lie in the border.
    [[nodiscard]] const float* at(int channelBlock, int y, int x) const {
        return m_values.data() + offsetOf(channelBlock, y, x);
    }
    [[nodiscard]] float* at(int channelBlock, int y, int x) {
        return m_values.data() + offsetOf(channelBlock, y, x);
    }

private:
    [[nodiscard]] std::size_t offsetOf(int channelBlock, int y, int x) const {
        return static_cast<std::size_t>(channelBlock) * blockStride() +
               static_cast<std::size_t>(y + m_border) * rowStride() +
               static_cast<std::size_t>(x + m_border) * block;
    }

    int m_channels = 0;
    cv::Size m_size;
    int m_border = 0;
    std::vector<float> m_values;
};

} // namespace stillwick
