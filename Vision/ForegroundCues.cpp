#include "Vision/ForegroundCues.h"

#include "Vision/BarrierDistance.h"
#include "Vision/LinearSystem.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace stillwick {
namespace {

using Values = std::vector<float>;

float square(float x) {
    return x * x;
}
float gauss(float x, float sigma) {
    return std::exp(-square(x / sigma) / 2);
}

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

float spaceDistance(const RegionGraph& graph, int i, int j) {
    return static_cast<float>(cv::norm(graph.regions[at(i)].centre - graph.regions[at(j)].centre));
}

// Stretches to 0..1; what hardly varies becomes 0.
Values stretched(Values values) {
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    const float from = *low;
    const float range = *high - *low;
    for (float& value : values)
        value = range > 1e-6F ? (value - from) / range : 0.0F;
    return values;
}

Values barrier(const WorkingPicture& picture, const RegionGraph& graph, FrameSides frame) {
    const cv::Mat1f distance = barrierDistance(picture, frame);
    Values sums(at(graph.count()), 0.0F);
    Values counts(at(graph.count()), 0.0F);
    for (int y = 0; y < distance.rows; ++y)
        for (int x = 0; x < distance.cols; ++x) {
            sums[at(graph.superpixels.labels(y, x))] += distance(y, x);
            counts[at(graph.superpixels.labels(y, x))] += 1;
        }
    for (std::size_t i = 0; i < sums.size(); ++i)
        sums[i] /= counts[i];
    return sums;
}

// The regions of each side: those whose centre lies in the outermost tenth.
std::array<std::vector<int>, 4> sides(const RegionGraph& graph) {
    cv::Point2f reach;
    for (const Region& region : graph.regions) {
        reach.x = std::max(reach.x, std::abs(region.centre.x));
        reach.y = std::max(reach.y, std::abs(region.centre.y));
    }
    std::array<std::vector<int>, 4> result;
    for (int i = 0; i < graph.count(); ++i) {
        const cv::Point2f c = graph.regions[at(i)].centre;
        if (c.x <= -.85F * reach.x)
            result[0].push_back(i);
        if (c.x >= .85F * reach.x)
            result[1].push_back(i);
        if (c.y <= -.85F * reach.y)
            result[2].push_back(i);
        if (c.y >= .85F * reach.y)
            result[3].push_back(i);
    }
    return result;
}

cv::Matx33f inverseSpread(const RegionGraph& graph, const std::vector<int>& side,
                          const cv::Vec3f& mean) {
    cv::Matx33f spread = cv::Matx33f::eye() * 30.0F;
    float weight = 0;
    for (const int i : side) {
        const cv::Vec3f d = graph.regions[at(i)].colour - mean;
        spread += graph.regions[at(i)].share * (d * d.t());
        weight += graph.regions[at(i)].share;
    }
    cv::Matx33f scaled = cv::Matx33f::eye() * 30.0F;
    scaled += (spread - scaled) * (1.0F / std::max(weight, 1e-6F));
    return scaled.inv(cv::DECOMP_CHOLESKY);
}

Values frameContrast(const RegionGraph& graph) {
    Values sum(at(graph.count()), 0.0F);
    Values highest(at(graph.count()), 0.0F);
    for (const std::vector<int>& side : sides(graph)) {
        cv::Vec3f mean;
        float weight = 0;
        for (const int i : side) {
            mean += graph.regions[at(i)].colour * graph.regions[at(i)].share;
            weight += graph.regions[at(i)].share;
        }
        mean /= std::max(weight, 1e-6F);
        const cv::Matx33f inverse = inverseSpread(graph, side, mean);
        Values distance;
        for (const Region& region : graph.regions) {
            const cv::Vec3f d = region.colour - mean;
            distance.push_back(std::sqrt(std::max(0.0F, d.dot(inverse * d))));
        }
        distance = stretched(std::move(distance));
        for (std::size_t i = 0; i < sum.size(); ++i) {
            sum[i] += distance[i];
            highest[i] = std::max(highest[i], distance[i]);
        }
    }
    for (std::size_t i = 0; i < sum.size(); ++i)
        sum[i] -= highest[i];
    return sum;
}

// The share of the frame that a region holds, 0 to 1.
float framePart(const RegionGraph& graph, int i, FrameSides sides) {
    const Region& region = graph.regions[at(i)];
    if (sides == FrameSides::All)
        return region.framePixels / graph.framePixels;
    return (region.framePixels - region.lowerFramePixels) /
           std::max(1.0F, graph.framePixels - graph.lowerFramePixels);
}

Values frameRarity(const RegionGraph& graph, FrameSides frame) {
    Values result;
    for (int i = 0; i < graph.count(); ++i) {
        float along = 0;
        float all = 0;
        for (int j = 0; j < graph.count(); ++j) {
            const float alike = gauss(graph.colourDistance(i, j), 9.0F);
            along += alike * framePart(graph, j, frame);
            all += alike * graph.regions[at(j)].share;
        }
        result.push_back(all / (all + along));
    }
    return result;
}

// How much each region's surroundings, reached without a change of colour, run along the frame.
Values frameConnectivity(const RegionGraph& graph, const cv::Mat1f& geodesic, FrameSides frame) {
    Values result;
    for (int i = 0; i < graph.count(); ++i) {
        float area = 0;
        float length = 0;
        for (int j = 0; j < graph.count(); ++j) {
            const float joined = gauss(geodesic(i, j), 8.0F);
            area += joined * graph.regions[at(j)].share;
            length += joined * framePart(graph, j, frame);
        }
        // A region of the whole picture's area along the whole frame: 4, as in a square.
        result.push_back(4 * length / std::sqrt(area));
    }
    return result;
}

Values backgroundWeights(const Values& connectivity) {
    Values weights;
    for (const float c : connectivity)
        weights.push_back(1 - gauss(c, 1.0F));
    return weights;
}

Values contrastAgainst(const RegionGraph& graph, const Values& weights, float reach) {
    Values result;
    for (int i = 0; i < graph.count(); ++i) {
        float sum = 0;
        for (int j = 0; j < graph.count(); ++j)
            sum += graph.colourDistance(i, j) * gauss(spaceDistance(graph, i, j), reach) *
                   weights[at(j)] * graph.regions[at(j)].share;
        result.push_back(sum);
    }
    return result;
}

// Affinities of regions at most two steps apart, and of all pairs along the frame.
cv::Mat1f affinities(const RegionGraph& graph, float sigma, float least) {
    cv::Mat1f result(graph.count(), graph.count(), 0.0F);
    const auto link = [&](int i, int j) {
        if (i != j)
            result(i, j) = result(j, i) = gauss(graph.colourDistance(i, j), sigma) + least;
    };
    for (int i = 0; i < graph.count(); ++i) {
        for (const int j : graph.regions[at(i)].neighbours) {
            link(i, j);
            for (const int k : graph.regions[at(j)].neighbours)
                link(i, k);
        }
        for (int j = 0; j < i; ++j)
            if (graph.regions[at(i)].touchesFrame() && graph.regions[at(j)].touchesFrame())
                link(i, j);
    }
    return result;
}

// The s that minimises the sum of background·s² + foreground·(s−1)² + affinity·(s−s')².
Values balanced(const cv::Mat1f& affinity, const Values& background, const Values& foreground) {
    cv::Mat1f matrix(-affinity);
    cv::Mat1f right(affinity.rows, 1);
    for (int i = 0; i < affinity.rows; ++i) {
        matrix(i, i) = background[at(i)] + foreground[at(i)] + 1e-3F +
                       static_cast<float>(cv::sum(affinity.row(i))[0]);
        right(i) = foreground[at(i)];
    }
    const cv::Mat1f solution = solvedSystem(matrix, right);
    return {solution.begin(), solution.end()};
}

cv::Mat1f rankingMatrix(const cv::Mat1f& affinity) {
    cv::Mat1f matrix(affinity * -.99F);
    for (int i = 0; i < affinity.rows; ++i)
        matrix(i, i) = static_cast<float>(cv::sum(affinity.row(i))[0]) + 1e-4F;
    return matrix;
}

// Manifold ranking in two stages (Yang et al., CVPR 2013).
Values ranking(const RegionGraph& graph) {
    const cv::Mat1f matrix = rankingMatrix(affinities(graph, 7.0F, 0.0F));
    cv::Mat1f queries(graph.count(), 4, 0.0F);
    const auto side = sides(graph);
    for (int s = 0; s < 4; ++s)
        for (const int i : side[at(s)])
            queries(i, s) = 1;
    const cv::Mat1f ranks = solvedSystem(matrix, queries);
    Values unlike(at(graph.count()), 1.0F);
    for (int s = 0; s < 4; ++s) {
        const cv::Mat1f column = ranks.col(s).clone();
        const Values rank = stretched({column.begin(), column.end()});
        for (std::size_t i = 0; i < unlike.size(); ++i)
            unlike[i] *= 1 - rank[i];
    }
    const float mean = static_cast<float>(cv::mean(unlike)[0]);
    cv::Mat1f foreground(graph.count(), 1);
    for (int i = 0; i < graph.count(); ++i)
        foreground(i) = unlike[at(i)] > mean ? 1.0F : 0.0F;
    const cv::Mat1f second = solvedSystem(matrix, foreground);
    return {second.begin(), second.end()};
}

Values compactness(const RegionGraph& graph) {
    Values result;
    for (int i = 0; i < graph.count(); ++i) {
        float weight = 0;
        cv::Point2f mean;
        for (int j = 0; j < graph.count(); ++j) {
            const float w = gauss(graph.colourDistance(i, j), 10.0F) * graph.regions[at(j)].share;
            weight += w;
            mean += w * graph.regions[at(j)].centre;
        }
        mean /= weight;
        float spread = 0;
        for (int j = 0; j < graph.count(); ++j) {
            const cv::Point2f d = graph.regions[at(j)].centre - mean;
            spread +=
                gauss(graph.colourDistance(i, j), 10.0F) * graph.regions[at(j)].share * d.dot(d);
        }
        result.push_back(-std::sqrt(spread / weight));
    }
    return result;
}

Values logTexture(const RegionGraph& graph) {
    Values result;
    for (const Region& region : graph.regions)
        result.push_back(std::log(.3F + region.texture));
    return result;
}

Values textureContrast(const RegionGraph& graph) {
    const Values texture = logTexture(graph);
    Values result;
    for (int i = 0; i < graph.count(); ++i) {
        float sum = 0;
        for (int j = 0; j < graph.count(); ++j)
            sum += std::abs(texture[at(i)] - texture[at(j)]) * graph.regions[at(j)].framePixels;
        result.push_back(sum);
    }
    return result;
}

// What each region says by itself.
template <typename Rule>
Values each(const RegionGraph& graph, Rule rule) {
    Values result;
    for (const Region& region : graph.regions)
        result.push_back(rule(region));
    return result;
}

float central(const Region& region) {
    return std::exp(-region.centre.dot(region.centre) / .08F);
}

float low(const Region& region) {
    return .5F + region.centre.y;
}

float warm(const Region& region) {
    return 1 / (1 + std::exp(-(region.colour[1] + .5F * region.colour[2]) / 15));
}

float sharp(const Region& region) {
    return std::log(1 + region.sharpness);
}

float saturated(const Region& region) {
    return std::min(1.0F, std::hypot(region.colour[1], region.colour[2]) / 60);
}

// The columns that need the connections between regions.
struct Connected {
    Connected(const RegionGraph& graph, const cv::Mat1f& geodesic, FrameSides frame)
        : background(backgroundWeights(frameConnectivity(graph, geodesic, frame))) {
        for (const float weight : background)
            detached.push_back(1 - weight);
    }
    Values background;
    Values detached;
};

void setColumn(cv::Mat1f& cues, int column, const Values& values) {
    for (int i = 0; i < cues.rows; ++i)
        cues(i, column) = values[at(i)];
}

} // namespace

cv::Mat1f firstCues(const WorkingPicture& picture, const RegionGraph& graph) {
    const cv::Mat1f geodesic = geodesicDistances(graph, 3.0F);
    const Connected all(graph, geodesic, FrameSides::All);
    const Connected above(graph, geodesic, FrameSides::AllButLower);
    const Values contrast = stretched(contrastAgainst(graph, all.background, .25F));
    cv::Mat1f cues(graph.count(), static_cast<int>(Cue::Count));
    const auto set = [&cues](Cue cue, const Values& values) {
        setColumn(cues, static_cast<int>(cue), values);
    };
    set(Cue::Barrier, stretched(barrier(picture, graph, FrameSides::All)));
    set(Cue::BarrierAbove, stretched(barrier(picture, graph, FrameSides::AllButLower)));
    set(Cue::FrameContrast, stretched(frameContrast(graph)));
    set(Cue::FrameRarity, frameRarity(graph, FrameSides::All));
    set(Cue::FrameRarityAbove, frameRarity(graph, FrameSides::AllButLower));
    set(Cue::BackgroundContrast, contrast);
    set(Cue::Detached, all.detached);
    set(Cue::DetachedAbove, above.detached);
    set(Cue::Optimised, balanced(affinities(graph, 7.0F, .1F), all.background, contrast));
    set(Cue::Ranking, stretched(ranking(graph)));
    set(Cue::Contrast, stretched(contrastAgainst(graph, Values(graph.regions.size(), 1.0F), .5F)));
    set(Cue::Compactness, stretched(compactness(graph)));
    set(Cue::TextureContrast, stretched(textureContrast(graph)));
    set(Cue::Central, each(graph, central));
    set(Cue::Low, each(graph, low));
    set(Cue::Warm, each(graph, warm));
    set(Cue::Sharp, stretched(each(graph, sharp)));
    set(Cue::Saturated, each(graph, saturated));
    return cues;
}

} // namespace stillwick
