// Bringing the light of HDR pictures into what an sRGB display shows. Free functions, any thread.
#pragma once

#include "Media/PlanarPicture.h"

namespace stillwick {

/// The luminance of diffuse white in HDR pictures, in cd/m². *Source*: ITU-R BT.2408.
inline constexpr double diffuseWhiteLuminance = 203;

/// Compresses linear light so that `peak`, in units of diffuse white, becomes display white,
/// keeping what is darker than half of diffuse white as it is; the hue stays, all three channels
/// are scaled by what the largest needs. Then encodes for sRGB. *Shape*: `light` three planes of
/// floats; `result` three of bytes, same size. *Source*: the Möbius curve for the compression; IEC
/// 61966-2-1 for the encoding.
void toneMap(const PlanarPicture& light, double peak, const PlanarPicture& result);

} // namespace stillwick
