#include "Media/ToneMapping.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace stillwick {

namespace {

constexpr int encodingSteps = 1 << 14;

/// sRGB codes of light in steps from 0 to 1.
const std::vector<std::uint8_t>& encoding() {
    static const std::vector<std::uint8_t> table = [] {
        std::vector<std::uint8_t> codes(encodingSteps + 1);
        for (int i = 0; i <= encodingSteps; ++i) {
            const double light = double(i) / encodingSteps;
            const double code =
                light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
            codes[std::size_t(i)] = std::uint8_t(std::lround(code * 255));
        }
        return codes;
    }();
    return table;
}

std::uint8_t encode(const std::uint8_t* codes, float light) {
    return codes[std::lrint(std::clamp(light, 0.0F, 1.0F) * float(encodingSteps))];
}

/// y = x up to the knee, from there a hyperbola that meets it smoothly and reaches 1 at the peak.
class Curve {
public:
    explicit Curve(double peak) {
        if (peak <= 1)
            return;
        const double j = knee;
        m_a = float(-j * j * (peak - 1) / (j * j - 2 * j + peak));
        m_b = float((j * j - 2 * j * peak + peak) / std::max(peak - 1, 1e-6));
        m_scale = float((double(m_b) * double(m_b) + 2 * double(m_b) * j + j * j) /
                        (double(m_b) - double(m_a)));
        m_isActive = true;
    }
    [[nodiscard]] float operator()(float x) const {
        return m_isActive && x > float(knee) ? m_scale * (x + m_a) / (x + m_b) : x;
    }

private:
    static constexpr double knee = 0.5;
    float m_a = 0;
    float m_b = 0;
    float m_scale = 1;
    bool m_isActive = false;
};

} // namespace

void toneMap(const PlanarPicture& light, double peak, const PlanarPicture& result) {
    const Curve curve(peak);
    const std::uint8_t* codes = encoding().data();
    const int width = light.layout().width;
    for (int y = 0; y < light.layout().height; ++y) {
        std::array<const float*, 3> from{};
        std::array<std::uint8_t*, 3> to{};
        for (int plane = 0; plane < 3; ++plane) {
            from[std::size_t(plane)] = reinterpret_cast<const float*>(light.row(plane, y));
            to[std::size_t(plane)] = result.row(plane, y);
        }
        for (int x = 0; x < width; ++x) {
            const float largest = std::max({from[0][x], from[1][x], from[2][x]});
            const float scale = largest > 0 ? curve(largest) / largest : 0;
            for (std::size_t plane = 0; plane < 3; ++plane)
                to[plane][x] = encode(codes, from[plane][x] * scale);
        }
    }
}

} // namespace stillwick
