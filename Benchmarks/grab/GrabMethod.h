// The ways of getting one exact picture out of a film that are timed against each other. One thread
// at a time.
#pragma once

#include "Clip.h"

#include <memory>
#include <optional>

namespace stillwick::benchmarks {

/// One way of grabbing pictures from one clip.
class GrabMethod {
public:
    GrabMethod() = default;
    virtual ~GrabMethod() = default;
    GrabMethod(const GrabMethod&) = delete;
    GrabMethod& operator=(const GrabMethod&) = delete;

    /// What is timed: from the request to the picture. *Errors*: std::exception.
    virtual void grab(const Moment& moment) = 0;
    /// The decoded samples behind the picture last grabbed; none where the method does not show
    /// them. Not timed.
    [[nodiscard]] virtual std::optional<PictureHash> lastPicture() { return std::nullopt; }
};

/// Whether a file is opened for every grab, or once for all.
enum class Opening { EveryTime, Once };

/// The application's own: to an RGBA bitmap. *Lifetime*: the clips outlive the methods.
[[nodiscard]] std::unique_ptr<GrabMethod> makeOurGrabs(const QString& path, Opening opening);

/// `ffmpeg -ss` as a process, its picture read as RGBA through a pipe.
[[nodiscard]] std::unique_ptr<GrabMethod> makeFfmpegProcess(const QString& path, const Clip& clip);

/// What no exact method that decodes all frames can beat: libavcodec alone, already open, from the
/// key frame to the frame, the packets in memory, nothing converted.
[[nodiscard]] std::unique_ptr<GrabMethod> makeDecodeFloor(const Clip& clip);

} // namespace stillwick::benchmarks
