// How a track says that its pictures are to be turned and stretched. Free functions, any thread.
#pragma once

#include "Media/VideoFrame.h"

class QImage;

namespace stillwick {

/// The display matrix, reduced to one of the eight upright orientations, and the sample aspect
/// ratio.
[[nodiscard]] TrackDescription describeTrack(const AVStream& stream);

/// The picture mirrored and turned as `track` says.
[[nodiscard]] QImage oriented(QImage picture, const TrackDescription& track);

/// The picture's sample aspect ratio: the frame's own, else the container's; 1:1 where both are
/// missing, absurd, or nearer to square than one can see.
[[nodiscard]] AVRational sampleAspectRatio(const VideoFrame& frame);

} // namespace stillwick
