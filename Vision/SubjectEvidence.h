// Whether a mask shows a subject at all, rather than a piece of a plain or patterned surface.
// Internal to Vision. Pure functions, any thread.
#pragma once

#include "Vision/RegionGraph.h"

namespace stillwick {

/// What speaks for a mask.
struct SubjectEvidence {
    /// Part of the picture's area.
    float share = 0;
    /// How far in Lab the colour changes across the mask's edge.
    float step = 0;
    /// The same, over the change at that distance elsewhere in the picture.
    float relativeStep = 0;
    /// How often a pixel's colour alone tells on which side of the mask it lies; .5 is by chance.
    float separable = 0;
    /// Part of the frame outside the mask that has the subject's colours.
    float repeated = 0;
    /// Part of the frame that the mask covers.
    float alongFrame = 0;
    /// Number of separate pieces of the frame that the mask covers.
    int crossings = 0;
};

/// The evidence for a mask of 0 and 255.
[[nodiscard]] SubjectEvidence subjectEvidence(const WorkingPicture& picture, const cv::Mat1b& mask);

/// True where a mask lies along so much of the frame, or meets it so often, that it shows stripes
/// or a ground rather than a subject, whatever speaks for it.
[[nodiscard]] bool showsSurface(const SubjectEvidence& evidence);

/// True where the evidence is enough without any other.
[[nodiscard]] bool showsSubject(const SubjectEvidence& evidence);

} // namespace stillwick
