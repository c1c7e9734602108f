#include "Vision/ForegroundNetwork.h"

#include "Vision/VisionError.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace stillwick {
namespace {

using std::string;

// The dilations of the context's blocks and of its last convolution.
constexpr std::array dilations{1, 2};
constexpr int widestDilation = 4;
constexpr int leastSide = 32;
constexpr int mostSide = 512;

void stopIfAsked(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw VisionError(VisionError::Category::Cancelled);
}

FeatureMap featuresOf(const cv::Mat3f& picture) {
    FeatureMap features(3, picture.size(), 1);
    for (int y = 0; y < picture.rows; ++y)
        for (int x = 0; x < picture.cols; ++x)
            for (int c = 0; c < 3; ++c)
                features.at(0, y, x)[c] = picture(y, x)[c] - .5F;
    return features;
}

// The mean of each channel over all places.
FeatureMap averaged(const FeatureMap& features) {
    FeatureMap result(features.channels(), {1, 1}, 0);
    const auto share = 1 / static_cast<float>(features.size().area());
    for (int b = 0; b < features.blockCount(); ++b)
        for (int y = 0; y < features.size().height; ++y)
            for (int x = 0; x < features.size().width; ++x)
                for (int c = 0; c < FeatureMap::block; ++c)
                    result.at(b, 0, 0)[c] += features.at(b, y, x)[c] * share;
    return result;
}

// Two neighbours of a place in a map half the size, and how much each counts.
struct Neighbours {
    int first = 0;
    int second = 0;
    float ofSecond = 0;
};

Neighbours neighboursAt(int place, int length) {
    const int odd = place % 2;
    const int half = place / 2;
    return {std::max(0, half - 1 + odd), std::min(length - 1, half + odd), odd == 0 ? .75F : .25F};
}

// Adds a map of half the size, interpolated linearly.
void addDoubled(const FeatureMap& half, FeatureMap& features) {
    for (int b = 0; b < features.blockCount(); ++b)
        for (int y = 0; y < features.size().height; ++y) {
            const Neighbours rows = neighboursAt(y, half.size().height);
            for (int x = 0; x < features.size().width; ++x) {
                const Neighbours columns = neighboursAt(x, half.size().width);
                const float* a = half.at(b, rows.first, columns.first);
                const float* ab = half.at(b, rows.first, columns.second);
                const float* c = half.at(b, rows.second, columns.first);
                const float* cd = half.at(b, rows.second, columns.second);
                float* to = features.at(b, y, x);
                for (int i = 0; i < FeatureMap::block; ++i) {
                    const float upper = a[i] + (ab[i] - a[i]) * columns.ofSecond;
                    const float lower = c[i] + (cd[i] - c[i]) * columns.ofSecond;
                    to[i] += upper + (lower - upper) * rows.ofSecond;
                }
            }
        }
}

} // namespace

// Reads the parts one after the other; one that is missing spoils the whole.
class NetworkReader final {
public:
    explicit NetworkReader(const NumpyArchive& archive) : m_archive(archive) {}

    std::optional<ForegroundNetwork> read() {
        readDown();
        for (std::size_t i = 0; i < dilations.size(); ++i)
            readResidual("context.blocks." + std::to_string(i), dilations[i], m_context);
        const auto wide = normed("context.wide.0", "context.wide.1", {1, widestDilation});
        const auto whole = checked(Convolution::read(m_archive, "context.whole", "", {}));
        readUp();
        const auto finest = checked(Convolution::read(m_archive, "finest.mask", "", {}));
        if (!m_whole || !wide || !whole || !finest)
            return std::nullopt;
        ForegroundNetwork network(*wide, *whole, *finest);
        network.m_side = side();
        network.m_down = std::move(m_down);
        network.m_context = std::move(m_context);
        network.m_up = std::move(m_up);
        if (network.m_side == 0 || !fits(network))
            return std::nullopt;
        return network;
    }

private:
    std::optional<Convolution> checked(std::optional<Convolution> part) {
        m_whole = m_whole && part.has_value();
        return part;
    }

    std::optional<Convolution> normed(const string& name, const string& norm,
                                      Convolution::Form form = {}) {
        return checked(Convolution::read(m_archive, name, norm, form));
    }

    void readResidual(const string& name, int dilation,
                      std::vector<ForegroundNetwork::Residual>& blocks) {
        auto first = normed(name + ".first.0", name + ".first.1", {1, dilation});
        auto second = normed(name + ".second", name + ".norm", {1, dilation});
        if (first && second)
            blocks.push_back({std::move(*first), std::move(*second)});
    }

    // Halvings to stride 32, each with as many blocks as there are.
    void readDown() {
        for (int halved = 2, stage = 0; halved <= ForegroundNetwork::stride; halved *= 2, ++stage) {
            const string name = "down." + std::to_string(stage) + '.';
            auto halving = normed(name + "0.0", name + "0.1", {2, 1});
            if (!halving)
                return;
            m_down.push_back({std::move(*halving), {}});
            for (int block = 1;; ++block) {
                const string blockName = name + std::to_string(block);
                if (!m_archive.holdsAny(blockName + '.'))
                    break;
                readResidual(blockName, 1, m_down.back().blocks);
            }
        }
    }

    void readUp() {
        for (std::size_t stage = 0; stage + 1 < m_down.size(); ++stage) {
            const string name = "up." + std::to_string(stage) + '.';
            auto reduce = normed(name + "reduce.0", name + "reduce.1");
            auto lateral = normed(name + "lateral.0", name + "lateral.1");
            auto merge = normed(name + "merge.0", name + "merge.1");
            if (!reduce || !lateral || !merge)
                return;
            m_up.push_back({std::move(*reduce), std::move(*lateral), std::move(*merge)});
        }
    }

    [[nodiscard]] int side() const {
        const std::string_view figures = m_archive.text("figures");
        const QByteArray json(figures.data(), static_cast<qsizetype>(figures.size()));
        const int side = QJsonDocument::fromJson(json).object().value(u"side").toInt();
        return side >= leastSide && side <= mostSide && side % ForegroundNetwork::stride == 0 ? side
                                                                                              : 0;
    }

    // Whether a question runs through: each part takes what the one before it gives.
    static bool fits(const ForegroundNetwork& network) {
        try {
            const cv::Size size(ForegroundNetwork::stride, ForegroundNetwork::stride);
            const cv::Mat1f answer =
                network.logOdds(cv::Mat3f(size, cv::Vec3f::all(.5F)), std::stop_token());
            return cv::checkRange(answer);
        } catch (const cv::Exception&) {
            return false;
        }
    }

    const NumpyArchive& m_archive;
    bool m_whole = true;
    std::vector<ForegroundNetwork::Downward> m_down;
    std::vector<ForegroundNetwork::Residual> m_context;
    std::vector<ForegroundNetwork::Upward> m_up;
};

std::optional<ForegroundNetwork> ForegroundNetwork::read(std::span<const std::byte> weights) {
    const auto archive = NumpyArchive::read(weights);
    return archive ? NetworkReader(*archive).read() : std::nullopt;
}

FeatureMap ForegroundNetwork::Residual::of(const FeatureMap& features) const {
    const FeatureMap between = first.of(features, Rectifier::Rectified, features.border());
    return second.of(between, Rectifier::Rectified, features.border(), &features);
}

// What the whole picture has in common comes on top of what lies around each place.
FeatureMap ForegroundNetwork::context(FeatureMap features) const {
    for (const Residual& block : m_context)
        features = block.of(features);
    const FeatureMap wide = m_wide.of(features, Rectifier::Rectified, 0);
    const FeatureMap whole = m_whole.of(averaged(features), Rectifier::None, 0);
    for (int b = 0; b < features.blockCount(); ++b)
        for (int y = 0; y < features.size().height; ++y)
            for (int x = 0; x < features.size().width; ++x)
                for (int c = 0; c < FeatureMap::block; ++c) {
                    float& value = features.at(b, y, x)[c];
                    value = std::max(0.0F, value + wide.at(b, y, x)[c] + whole.at(b, 0, 0)[c]);
                }
    return features;
}

cv::Mat1f ForegroundNetwork::logOdds(const cv::Mat3f& picture, const std::stop_token& stop) const {
    CV_Assert(picture.rows % stride == 0 && picture.cols % stride == 0 && !picture.empty());
    std::vector<FeatureMap> stages{featuresOf(picture)};
    for (std::size_t i = 0; i < m_down.size(); ++i) {
        stopIfAsked(stop);
        const int border = i + 1 < m_down.size() ? 1 : widestDilation;
        FeatureMap features = m_down[i].halving.of(stages.back(), Rectifier::Rectified, border);
        for (const Residual& block : m_down[i].blocks)
            features = block.of(features);
        stages.push_back(std::move(features));
    }
    FeatureMap features = context(std::move(stages.back()));
    stages.pop_back();
    for (const Upward& up : m_up) {
        stopIfAsked(stop);
        FeatureMap merged = up.lateral.of(stages.back(), Rectifier::Rectified, 1);
        addDoubled(up.reduce.of(features, Rectifier::Rectified, 0), merged);
        features = up.merge.of(merged, Rectifier::Rectified, 1);
        stages.pop_back();
    }
    const FeatureMap quads = m_finest.of(features, Rectifier::None, 0);
    CV_Assert(quads.channels() == 4);
    cv::Mat1f result(picture.size());
    for (int y = 0; y < result.rows; ++y)
        for (int x = 0; x < result.cols; ++x)
            result(y, x) = quads.at(0, y / 2, x / 2)[y % 2 * 2 + x % 2];
    return result;
}

} // namespace stillwick
