// Draws the line between subject and background: the cut of least cost through the picture, given
// how likely each pixel is to belong to a subject. Internal to Vision. Pure function, any thread.
#pragma once

#include "Vision/RegionGraph.h"

namespace stillwick {

/// What counts how much in a cut.
struct CutWeights {
    /// Added to the odds.
    float priorShift = 0;
    /// Of the odds of a pixel's colour.
    float colour = 0;
    /// Of a cut between two pixels of one colour.
    float smoothness = 0;
};

/// 255 on the subjects, 0 elsewhere and where the picture is transparent. Colours of subject and
/// background are learnt from the odds, then from the cut itself, a few times over.
/// *Shape*: `odds` of the picture's size, log odds.
/// *Source*: Rother et al., GrabCut, SIGGRAPH 2004, with histograms for the mixtures and the odds
/// as a prior; Boykov and Kolmogorov, PAMI 2004, for the cut.
[[nodiscard]] cv::Mat1b subjectCut(const WorkingPicture& picture, const cv::Mat1f& odds,
                                   const CutWeights& weights);

} // namespace stillwick
