// One sharp picture from the two fields of an interlaced frame. Free function, any thread.
#pragma once

#include "Media/PlanarPicture.h"

namespace stillwick {

/// Keeps the rows of the field shown first. In the other rows it keeps every pixel that belongs to
/// the same moment, and replaces by interpolation along edges those that show the comb of movement.
/// Looks at this frame alone, so that the result does not depend on where decoding began. *Shape*:
/// three planes R, G, B of bytes, changed in place; further planes stay. *Source*: edge-based line
/// averaging (Doyle, 1988) for the interpolation.
void deinterlace(const PlanarPicture& picture, int firstField);

} // namespace stillwick
