// Still pictures of a film at exact times. Any thread.
#pragma once

#include "Media/CMTime.h"
#include "Media/MediaError.h"

#include <QImage>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace stillwick {

class MediaAsset;

/// Grabs pictures of one film, one after the other, away from the caller's thread.
///
/// A request holds what it needs: the generator may be replaced or go while requests are under way,
/// and these still answer.
class ImageGenerator final {
public:
    /// What a request ends with: a picture and the time of its frame, or an error.
    /// *Shape*: RGBA, 8 bits, premultiplied, colour space sRGB.
    struct Result {
        QImage image;
        CMTime actualTime;
        std::optional<MediaError> error;
    };
    using CompletionHandler = std::function<void(Result)>;

    /// Opens nothing yet: that is part of the first request.
    explicit ImageGenerator(std::shared_ptr<const MediaAsset> asset);
    ~ImageGenerator();

    /// Whether pictures are turned upright as the track's display matrix says. False at first.
    void setAppliesPreferredTrackTransform(bool applies);
    [[nodiscard]] bool appliesPreferredTrackTransform() const noexcept;
    /// How far before and after the time asked for the frame may lie; both infinite at first. The
    /// exact frame is always allowed, a nearer key frame is taken where it saves decoding.
    void setRequestedTimeToleranceBefore(const CMTime& tolerance);
    void setRequestedTimeToleranceAfter(const CMTime& tolerance);

    /// Asks for the picture at `time`, with the settings as they are now. `completion` is called
    /// exactly once, on a thread of the generator's choosing. After `stop` the request ends soon,
    /// with the error Cancelled.
    void generateImageAsynchronously(const CMTime& time, CompletionHandler completion,
                                     std::stop_token stop = {}) const;

    /// The same, on the caller's thread.
    [[nodiscard]] Result generateImage(const CMTime& time, const std::stop_token& stop = {}) const;

private:
    struct Core;
    struct Settings {
        bool appliesPreferredTrackTransform = false;
        CMTime toleranceBefore = CMTime::positiveInfinity();
        CMTime toleranceAfter = CMTime::positiveInfinity();
    };

    std::shared_ptr<Core> m_core;
    Settings m_settings;
};

} // namespace stillwick
