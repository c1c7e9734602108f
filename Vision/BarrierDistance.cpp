#include "Vision/BarrierDistance.h"

#include <algorithm>
#include <array>
#include <limits>

namespace stillwick {
namespace {

constexpr int sweeps = 4;

// One channel: for each pixel the lowest and the highest value on the best path found so far.
class Sweeper final {
public:
    Sweeper(cv::Mat1f values, const cv::Mat1b& visible, FrameSides sides)
        : m_values(std::move(values)), m_lowest(m_values.clone()), m_highest(m_values.clone()),
          m_distance(m_values.size(), std::numeric_limits<float>::max()) {
        m_distance.row(0).setTo(0);
        if (sides == FrameSides::All)
            m_distance.row(m_distance.rows - 1).setTo(0);
        m_distance.col(0).setTo(0);
        m_distance.col(m_distance.cols - 1).setTo(0);
        m_distance.setTo(0, visible == 0);
    }

    cv::Mat1f run() {
        for (int sweep = 0; sweep < sweeps; ++sweep)
            if (sweep % 2 == 0)
                sweepForward();
            else
                sweepBackward();
        return m_distance;
    }

private:
    void sweepForward() {
        for (int y = 1; y < m_values.rows; ++y)
            for (int x = 1; x < m_values.cols - 1; ++x) {
                extend(y, x, y - 1, x);
                extend(y, x, y, x - 1);
            }
    }

    void sweepBackward() {
        for (int y = m_values.rows - 1; y > 0; --y)
            for (int x = m_values.cols - 2; x > 0; --x) {
                if (y + 1 < m_values.rows)
                    extend(y, x, y + 1, x);
                extend(y, x, y, x + 1);
            }
    }

    void extend(int y, int x, int fromY, int fromX) {
        if (m_distance(fromY, fromX) >= m_distance(y, x))
            return;
        const float low = std::min(m_lowest(fromY, fromX), m_values(y, x));
        const float high = std::max(m_highest(fromY, fromX), m_values(y, x));
        if (high - low >= m_distance(y, x))
            return;
        m_distance(y, x) = high - low;
        m_lowest(y, x) = low;
        m_highest(y, x) = high;
    }

    cv::Mat1f m_values;
    cv::Mat1f m_lowest;
    cv::Mat1f m_highest;
    cv::Mat1f m_distance;
};

} // namespace

cv::Mat1f barrierDistance(const WorkingPicture& picture, FrameSides sides) {
    std::array<cv::Mat1f, 3> channels;
    cv::split(picture.lab, channels.data());
    cv::Mat1f sum(picture.lab.size(), 0.0F);
    for (const cv::Mat1f& channel : channels)
        sum += Sweeper(channel, picture.visible, sides).run();
    return sum;
}

} // namespace stillwick
