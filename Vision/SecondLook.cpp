#include "Vision/ForegroundCues.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace stillwick {
namespace {

float gauss(float x, float sigma) {
    return std::exp(-(x / sigma) * (x / sigma) / 2);
}

// A weighted mean of the answers.
struct Poll {
    float yes = 0;
    float all = 1e-6F;

    void add(float weight, float probability) {
        yes += weight * probability;
        all += weight;
    }
    [[nodiscard]] float mean() const { return yes / all; }
};

// The first answer as a whole: how much, where, how wide.
struct Answer {
    float mass = 1e-6F;
    cv::Point2f middle;
    float spread = 0;
};

Answer answerOf(const RegionGraph& graph, const std::vector<float>& probability) {
    Answer answer;
    for (std::size_t i = 0; i < probability.size(); ++i) {
        const float weight = probability[i] * probability[i] * graph.regions[i].share;
        answer.mass += weight;
        answer.middle += weight * graph.regions[i].centre;
    }
    answer.middle /= answer.mass;
    for (std::size_t i = 0; i < probability.size(); ++i) {
        const cv::Point2f d = graph.regions[i].centre - answer.middle;
        answer.spread += probability[i] * probability[i] * graph.regions[i].share * d.dot(d);
    }
    answer.spread = std::sqrt(answer.spread / answer.mass);
    return answer;
}

// Eight directions; in each, the strongest answer that is not too far away.
class Surroundings final {
public:
    void add(cv::Point2f offset, float distance, float probability) {
        constexpr float sectorsPerRadian = 8 / 6.2831855F;
        const int sector =
            static_cast<int>((std::atan2(offset.y, offset.x) + 3.1415927F) * sectorsPerRadian) % 8;
        float& strongest = m_strongest[static_cast<std::size_t>(sector)];
        strongest = std::max(strongest, probability * gauss(distance, .3F));
    }
    // High only where at most one direction is open.
    [[nodiscard]] float enclosed() const {
        auto sorted = m_strongest;
        std::sort(sorted.begin(), sorted.end());
        return sorted[1] + sorted[2];
    }

private:
    std::array<float, 8> m_strongest{};
};

void look(const RegionGraph& graph, const std::vector<float>& probability, const Answer& answer,
          int i, cv::Mat1f& cues) {
    const Region& region = graph.regions[static_cast<std::size_t>(i)];
    Poll around;
    Poll further;
    Poll colour;
    Poll local;
    Surroundings surroundings;
    for (int j = 0; j < graph.count(); ++j) {
        const Region& other = graph.regions[static_cast<std::size_t>(j)];
        const float p = probability[static_cast<std::size_t>(j)];
        const cv::Point2f offset = other.centre - region.centre;
        const float distance = std::sqrt(offset.dot(offset));
        const float difference = graph.colourDistance(i, j);
        colour.add(gauss(difference, 5) * other.share, p);
        local.add(gauss(difference, 8) * gauss(distance, .2F) * other.share, p);
        if (i == j)
            continue;
        around.add(gauss(difference, 20) * gauss(distance, .08F) * other.share, p);
        further.add(gauss(difference, 12) * gauss(distance, .15F) * other.share, p);
        surroundings.add(offset, distance, p);
    }
    const auto set = [&cues, i](SecondCue cue, float value) {
        cues(i, static_cast<int>(cue)) = value;
    };
    set(SecondCue::AlikeAround, around.mean());
    set(SecondCue::AlikeFurther, further.mean());
    set(SecondCue::ColourOdds,
        std::log((colour.yes / (answer.mass + .05F) + .02F) / (colour.all - colour.yes + .02F)));
    set(SecondCue::LocalOdds, std::log((local.yes + .005F) / (local.all - local.yes + .005F)));
    const cv::Point2f offset = region.centre - answer.middle;
    set(SecondCue::NearTheAnswer,
        gauss(std::sqrt(offset.dot(offset)), 1.5F * (answer.spread + .08F)));
    set(SecondCue::Enclosed, surroundings.enclosed());
    set(SecondCue::Touching, region.touchesFrame() ? 1.0F : 0.0F);
}

} // namespace

cv::Mat1f secondCues(const RegionGraph& graph, const std::vector<float>& logOdds) {
    std::vector<float> probability(logOdds.size());
    std::transform(logOdds.begin(), logOdds.end(), probability.begin(),
                   [](float odds) { return 1 / (1 + std::exp(-odds)); });
    const Answer answer = answerOf(graph, probability);
    cv::Mat1f cues(graph.count(), static_cast<int>(SecondCue::Count));
    for (int i = 0; i < graph.count(); ++i) {
        cues(i, static_cast<int>(SecondCue::FirstAnswer)) = logOdds[static_cast<std::size_t>(i)];
        look(graph, probability, answer, i, cues);
    }
    return cues;
}

} // namespace stillwick
