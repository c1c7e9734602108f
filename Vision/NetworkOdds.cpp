#include "Vision/NetworkOdds.h"

#include "Vision/ParallelJobs.h"
#include "Vision/PictureMatrix.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace stillwick {
namespace {

// Closer looks are taken at a copy of this size.
constexpr int viewSide = 960;
// The sides at which the network looks at the whole picture, and closer, where subjects fill its
// picture. Chosen between what 60 salient subjects and 25 people kept apart show; the network
// itself takes any.
constexpr int wholeSide = 160;
constexpr int closerSide = 256;
// Pieces of the first answer that get a look of their own: the largest, but no specks.
constexpr std::size_t mostLooks = 4;
constexpr double leastPiece = .004;
// How much is seen around a piece, in parts of its size, in the first and the second closer look.
constexpr std::array margins{.3, .15};
// A box that is nearly the whole picture shows nothing new.
constexpr double mostOfPicture = .9;
// What a closer look counts beside the looks before, and the part of its width over which it fades
// towards its sides.
constexpr float weightOfLook = .65F;
constexpr float fading = .08F;

// A part of the picture as the network wants it, mirrored or not.
cv::Mat1f look(const ForegroundNetwork& network, const cv::Mat4b& part, int side, bool mirrored,
               const std::stop_token& stop) {
    cv::Mat4b square;
    const bool shrinks = std::max(part.cols, part.rows) > side;
    cv::resize(part, square, {side, side}, 0, 0, shrinks ? cv::INTER_AREA : cv::INTER_LINEAR);
    if (mirrored)
        cv::flip(square, square, 1);
    cv::Mat1f odds = network.logOdds(coloursOf(square), stop);
    if (mirrored)
        cv::flip(odds, odds, 1);
    return odds;
}

// One look, both ways, at each of some parts of the view.
std::vector<cv::Mat1f> looks(const ForegroundNetwork& network, const cv::Mat4b& view,
                             const std::vector<cv::Rect>& parts, int side,
                             const std::stop_token& stop) {
    std::vector<cv::Mat1f> plain(2 * parts.size());
    std::vector<std::function<void()>> jobs;
    for (std::size_t i = 0; i < plain.size(); ++i)
        jobs.emplace_back([&network, &view, &parts, &plain, &stop, side, i] {
            plain[i] = look(network, view(parts[i / 2]), side, i % 2 == 1, stop);
        });
    runSideBySide(jobs);
    std::vector<cv::Mat1f> means;
    for (std::size_t i = 0; i < plain.size(); i += 2)
        means.emplace_back((plain[i] + plain[i + 1]) * .5);
    return means;
}

// The boxes of the largest pieces of what is more likely subject than not.
std::vector<cv::Rect> piecesOf(const cv::Mat1f& odds) {
    const cv::Mat1b mask(odds > 0);
    cv::Mat1i labels;
    cv::Mat1i stats;
    cv::Mat1d middles;
    const int count = cv::connectedComponentsWithStats(mask, labels, stats, middles, 8, CV_32S);
    std::vector<int> order;
    for (int piece = 1; piece < count; ++piece)
        if (stats(piece, cv::CC_STAT_AREA) >= leastPiece * static_cast<double>(mask.total()))
            order.push_back(piece);
    std::stable_sort(order.begin(), order.end(), [&stats](int a, int b) {
        return stats(a, cv::CC_STAT_AREA) > stats(b, cv::CC_STAT_AREA);
    });
    order.resize(std::min(order.size(), mostLooks));
    std::vector<cv::Rect> boxes;
    for (const int piece : order)
        boxes.emplace_back(stats(piece, cv::CC_STAT_LEFT), stats(piece, cv::CC_STAT_TOP),
                           stats(piece, cv::CC_STAT_WIDTH), stats(piece, cv::CC_STAT_HEIGHT));
    return boxes;
}

cv::Rect widened(const cv::Rect& box, double margin, cv::Size size) {
    const int x = cvCeil(box.width * margin);
    const int y = cvCeil(box.height * margin);
    return cv::Rect(box.x - x, box.y - y, box.width + 2 * x, box.height + 2 * y) &
           cv::Rect({}, size);
}

// How much a look counts at a place along one axis: it fades towards sides inside the picture.
std::vector<float> weightsAlong(int from, int length, int whole) {
    std::vector<float> weights(static_cast<std::size_t>(length));
    const float over = std::max(1.0F, fading * static_cast<float>(length));
    for (int i = 0; i < length; ++i) {
        const float fromStart = from == 0 ? 1 : static_cast<float>(i + 1) / over;
        const float fromEnd = from + length == whole ? 1 : static_cast<float>(length - i) / over;
        weights[static_cast<std::size_t>(i)] = std::min({1.0F, fromStart, fromEnd});
    }
    return weights;
}

// The looks at parts of the map, gathered.
class Gathering final {
public:
    explicit Gathering(cv::Size size) : m_sum(size, 0.0F), m_weight(size, 0.0F) {}

    void add(const cv::Mat1f& odds, const cv::Rect& part) {
        cv::Mat1f sized;
        cv::resize(odds, sized, part.size(), 0, 0,
                   part.width < odds.cols ? cv::INTER_AREA : cv::INTER_CUBIC);
        const auto across = weightsAlong(part.x, part.width, m_sum.cols);
        const auto down = weightsAlong(part.y, part.height, m_sum.rows);
        for (int y = 0; y < part.height; ++y)
            for (int x = 0; x < part.width; ++x) {
                const float weight = std::min(across[static_cast<std::size_t>(x)],
                                              down[static_cast<std::size_t>(y)]);
                m_sum(part.y + y, part.x + x) += weight * sized(y, x);
                m_weight(part.y + y, part.x + x) += weight;
            }
    }

    void mixInto(cv::Mat1f& odds) const {
        for (int y = 0; y < odds.rows; ++y)
            for (int x = 0; x < odds.cols; ++x)
                if (m_weight(y, x) > 0) {
                    const float share = weightOfLook * std::min(1.0F, m_weight(y, x));
                    odds(y, x) += share * (m_sum(y, x) / m_weight(y, x) - odds(y, x));
                }
    }

private:
    cv::Mat1f m_sum;
    cv::Mat1f m_weight;
};

// The same part in the view.
cv::Rect inView(const cv::Rect& part, cv::Size map, cv::Size view) {
    const auto scaled = [](int value, int from, int to) {
        return static_cast<int>(static_cast<std::int64_t>(value) * to / from);
    };
    const cv::Point start(scaled(part.x, map.width, view.width),
                          scaled(part.y, map.height, view.height));
    const cv::Point end(scaled(part.br().x, map.width, view.width),
                        scaled(part.br().y, map.height, view.height));
    return {start, cv::Point(std::max(end.x, start.x + 1), std::max(end.y, start.y + 1))};
}

} // namespace

cv::Mat1f networkOdds(const ForegroundNetwork& network, const cv::Mat4b& pixels, cv::Size size,
                      const std::stop_token& stop) {
    const cv::Mat4b view = reducedTo(pixels, std::max({viewSide, size.width, size.height}));
    cv::Mat1f odds;
    cv::resize(looks(network, view, {cv::Rect({}, view.size())}, wholeSide, stop).front(), odds,
               size, 0, 0, cv::INTER_CUBIC);
    for (const double margin : margins) {
        std::vector<cv::Rect> parts;
        for (const cv::Rect& box : piecesOf(odds))
            parts.push_back(widened(box, margin, size));
        std::erase_if(parts, [&size](const cv::Rect& part) {
            return part.area() > mostOfPicture * size.area();
        });
        std::vector<cv::Rect> inTheView;
        for (const cv::Rect& part : parts)
            inTheView.push_back(inView(part, size, view.size()));
        const std::vector<cv::Mat1f> closer = looks(network, view, inTheView, closerSide, stop);
        Gathering gathering(size);
        for (std::size_t i = 0; i < parts.size(); ++i)
            gathering.add(closer[i], parts[i]);
        gathering.mixInto(odds);
    }
    return odds;
}

} // namespace stillwick
