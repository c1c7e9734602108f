// The hints by which a region of a picture is told from its background: each a number per region.
// Internal to Vision. Pure functions, any thread.
#pragma once

#include "Vision/RegionGraph.h"

#include <vector>

namespace stillwick {

/// The hints of the first look, which know nothing but the picture.
enum class Cue {
    Barrier,            ///< a barrier parts it from the frame
    FrameContrast,      ///< its colour is far from that of three of the four sides
    FrameRarity,        ///< its colour is rare along the frame
    BackgroundContrast, ///< its colour differs from that of regions well connected to the frame
    Detached,           ///< little of what is joined with it lies along the frame
    Optimised,          ///< the two above, balanced over the graph
    Ranking,            ///< unlike the sides when they are ranked over the graph
    Contrast,           ///< its colour differs from that of the whole picture
    Compactness,        ///< its colour sits in one place
    TextureContrast,    ///< its texture differs from that along the frame
    Central,            ///< it is near the middle
    Low,                ///< it is in the lower part
    Warm,               ///< it is red or yellow
    BarrierAbove,     ///< as Barrier, where the lower side is no frame: subjects are cut off there
    FrameRarityAbove, ///< as FrameRarity, likewise
    DetachedAbove,    ///< as Detached, likewise
    Sharp,            ///< it is in focus
    Saturated,        ///< its colour is strong
    Count
};

/// The hints of a second look, which know a first answer.
enum class SecondCue {
    FirstAnswer,   ///< what the first look said, as log odds
    AlikeAround,   ///< what it said of the regions around that are somewhat alike
    AlikeFurther,  ///< what it said of the regions further around that are much alike
    ColourOdds,    ///< log odds of its colour, by the first answer
    LocalOdds,     ///< the same, counting the regions near by more
    NearTheAnswer, ///< it is near the middle of the first answer
    Enclosed,      ///< the first answer lies on all sides of it
    Touching,      ///< it lies along the frame
    Count
};

/// One row per region, one column per `Cue`, each from 0 to 1.
[[nodiscard]] cv::Mat1f firstCues(const WorkingPicture& picture, const RegionGraph& graph);

/// One row per region, one column per `SecondCue`, given the log odds of a first answer.
[[nodiscard]] cv::Mat1f secondCues(const RegionGraph& graph, const std::vector<float>& logOdds);

} // namespace stillwick
