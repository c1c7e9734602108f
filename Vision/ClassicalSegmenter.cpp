#include "Vision/ClassicalSegmenter.h"

#include "Vision/CutOut.h"
#include "Vision/ForegroundOdds.h"
#include "Vision/InstanceLabels.h"
#include "Vision/SubjectCut.h"
#include "Vision/SubjectEvidence.h"

namespace stillwick {
namespace {

// Tuned on 391 pictures of DUTS-TR: the cut raises the mean IoU of the odds from .664 to .712.
constexpr CutWeights cutWeights{.3F, .8F, 30};

cv::Mat1b subjectsIn(const SearchTask& task) {
    const cv::Mat1f odds = foregroundOdds(task.working);
    stopIfAsked(task.stop);
    const cv::Mat1b mask = withoutSpecks(subjectCut(task.working, odds, cutWeights));
    stopIfAsked(task.stop);
    const bool shown = showsSubject(subjectEvidence(task.working, mask));
    return shown ? mask : cv::Mat1b(mask.size(), uchar{0});
}

} // namespace

Foreground ClassicalSegmenter::segment(const QImage& picture, std::stop_token stop) const {
    return cutOut(picture, subjectsIn, stop);
}

} // namespace stillwick
