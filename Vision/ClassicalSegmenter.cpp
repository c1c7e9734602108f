#include "Vision/ClassicalSegmenter.h"

#include "Vision/CutOut.h"
#include "Vision/ForegroundOdds.h"
#include "Vision/InstanceLabels.h"
#include "Vision/SubjectCut.h"
#include "Vision/SubjectEvidence.h"

namespace stillwick {
namespace {

cv::Mat1b subjectsIn(const SearchTask& task) {
    const cv::Mat1f odds = foregroundOdds(task.working);
    stopIfAsked(task.stop);
    const cv::Mat1b mask = withoutSpecks(subjectCut(task.working, odds));
    stopIfAsked(task.stop);
    const bool shown = showsSubject(subjectEvidence(task.working, mask));
    return shown ? mask : cv::Mat1b(mask.size(), uchar{0});
}

} // namespace

Foreground ClassicalSegmenter::segment(const QImage& picture, std::stop_token stop) const {
    return cutOut(picture, subjectsIn, stop);
}

} // namespace stillwick
