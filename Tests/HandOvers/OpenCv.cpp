// The parts of a loop that OpenCV runs side by side.
#include "Edges.h"

#include <opencv2/core/utility.hpp>

namespace {

/// A loop's body of which each part has seen what came before the loop, and is seen after it.
class SeenBody final : public cv::ParallelLoopBody {
public:
    explicit SeenBody(const cv::ParallelLoopBody& body) : m_body(body) { __tsan_release(this); }

    void operator()(const cv::Range& range) const override {
        auto* const edge = const_cast<SeenBody*>(this);
        __tsan_acquire(edge);
        m_body(range);
        __tsan_release(edge);
    }

private:
    const cv::ParallelLoopBody& m_body;
};

} // namespace

void cv::parallel_for_(const Range& range, const ParallelLoopBody& body, double stripes) {
    static auto* const loop =
        stillwick::testing::original<void(const Range&, const ParallelLoopBody&, double)>(
            "_ZN2cv13parallel_for_ERKNS_5RangeERKNS_16ParallelLoopBodyEd");
    SeenBody seen(body);
    loop(range, seen, stripes);
    __tsan_acquire(&seen);
}
