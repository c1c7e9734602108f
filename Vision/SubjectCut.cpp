#include "Vision/SubjectCut.h"

#include "Vision/ColourModel.h"

#include <opencv2/imgproc.hpp>
#include <opencv2/imgproc/detail/gcgraph.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace stillwick {
namespace {

constexpr int rounds = 2;
constexpr float priorLimit = 4;
constexpr float colourLimit = 3;
// No path leads there.
constexpr float never = -100;

struct Step {
    cv::Point to;
    float length;
};
const std::array<Step, 4> steps{Step{{1, 0}, 1}, Step{{0, 1}, 1}, Step{{1, 1}, 1.4142136F},
                                Step{{-1, 1}, 1.4142136F}};

float squaredDifference(const cv::Mat3f& lab, cv::Point a, cv::Point b) {
    const cv::Vec3f d = lab(a) - lab(b);
    return d.dot(d);
}

float meanSquaredDifference(const cv::Mat3f& lab) {
    const cv::Rect frame({}, lab.size());
    double sum = 0;
    double count = 1e-6;
    for (int y = 0; y < lab.rows; ++y)
        for (int x = 0; x < lab.cols; ++x)
            for (const Step& step : steps)
                if (frame.contains(cv::Point(x, y) + step.to)) {
                    sum += squaredDifference(lab, {x, y}, cv::Point(x, y) + step.to);
                    count += 1;
                }
    return static_cast<float>(sum / count);
}

// The pixels and their links, ready to be cut.
class CutGraph final {
public:
    CutGraph(const cv::Mat3f& lab, float smoothness)
        : m_size(lab.size()),
          m_graph(static_cast<unsigned>(lab.total()), static_cast<unsigned>(lab.total() * 8)) {
        for (std::size_t i = 0; i < lab.total(); ++i)
            m_graph.addVtx();
        const float spread = 2 * std::max(1e-3F, meanSquaredDifference(lab));
        const cv::Rect frame({}, m_size);
        for (int y = 0; y < lab.rows; ++y)
            for (int x = 0; x < lab.cols; ++x)
                for (const Step& step : steps) {
                    const cv::Point to = cv::Point(x, y) + step.to;
                    if (!frame.contains(to))
                        continue;
                    const float cost = smoothness / step.length *
                                       std::exp(-squaredDifference(lab, {x, y}, to) / spread);
                    m_graph.addEdges(index({x, y}), index(to), cost, cost);
                }
    }

    void setOdds(const cv::Mat1f& odds) {
        for (int y = 0; y < m_size.height; ++y)
            for (int x = 0; x < m_size.width; ++x)
                m_graph.addTermWeights(index({x, y}), std::max(0.0F, odds(y, x)),
                                       std::max(0.0F, -odds(y, x)));
    }

    cv::Mat1b cut() {
        m_graph.maxFlow();
        cv::Mat1b mask(m_size);
        for (int y = 0; y < m_size.height; ++y)
            for (int x = 0; x < m_size.width; ++x)
                mask(y, x) = m_graph.inSourceSegment(index({x, y})) ? 255 : 0;
        return mask;
    }

private:
    [[nodiscard]] int index(cv::Point p) const { return p.y * m_size.width + p.x; }

    cv::Size m_size;
    cv::detail::GCGraph<float> m_graph;
};

cv::Mat1f probabilities(const cv::Mat1f& odds) {
    cv::Mat1f result(odds.size());
    std::transform(odds.begin(), odds.end(), result.begin(),
                   [](float value) { return 1 / (1 + std::exp(-value)); });
    return result;
}

cv::Mat1f joinedOdds(const WorkingPicture& picture, const cv::Mat1f& prior, const cv::Mat1f& colour,
                     const CutWeights& weights) {
    cv::Mat1f result(prior.size(), never);
    for (int y = 0; y < prior.rows; ++y)
        for (int x = 0; x < prior.cols; ++x)
            if (picture.visible(y, x) != 0)
                result(y, x) =
                    std::clamp(prior(y, x) + weights.priorShift, -priorLimit, priorLimit) +
                    weights.colour * std::clamp(colour(y, x), -colourLimit, colourLimit);
    return result;
}

} // namespace

cv::Mat1b subjectCut(const WorkingPicture& picture, const cv::Mat1f& odds,
                     const CutWeights& weights) {
    cv::Mat1f belief = probabilities(odds);
    const CutGraph links(picture.lab, weights.smoothness);
    cv::Mat1b mask;
    for (int round = 0; round < rounds; ++round) {
        CutGraph graph = links;
        graph.setOdds(joinedOdds(picture, odds, colourOdds(picture, belief), weights));
        mask = graph.cut();
        // Half the cut, half the belief: what is not sure stays open to the other side.
        for (int y = 0; y < odds.rows; ++y)
            for (int x = 0; x < odds.cols; ++x)
                belief(y, x) = .5F * belief(y, x) + .5F * static_cast<float>(mask(y, x)) / 255;
    }
    return mask;
}

} // namespace stillwick
