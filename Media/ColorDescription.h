// What a frame's sample values mean. Plain values, any thread.
#pragma once

#include "Media/VideoFrame.h"

namespace stillwick {

/// A frame's colour, every unspecified point filled in as players guess it.
struct ColorDescription {
    AVColorSpace matrix = AVCOL_SPC_BT709;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_BT709;
    AVColorPrimaries primaries = AVCOL_PRI_BT709;
    AVChromaLocation chromaLocation = AVCHROMA_LOC_LEFT;
    bool isFullRange = false;

    /// True where the values must be mapped to a darker display.
    [[nodiscard]] bool isHighDynamicRange() const noexcept {
        return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
    }
    bool operator==(const ColorDescription&) const = default;
};

/// *Source*: ITU-T H.273 for the codes. Unspecified matrices are BT.709 from 1280 x 720 on, BT.601
/// below; unspecified ranges limited, but full for RGB and for greys of codecs that are not video
/// codecs; primaries are told apart only where they are wider than BT.709 and declared, since
/// players show all others alike.
[[nodiscard]] ColorDescription colorOf(const VideoFrame& frame);

} // namespace stillwick
