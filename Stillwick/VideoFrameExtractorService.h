// Full-resolution stills of the loaded film. Main thread.
#pragma once

#include "Media/CMTime.h"

#include <QCoroTask>
#include <QImage>

#include <memory>
#include <stop_token>

namespace stillwick {

class ImageGenerator;
class MediaAsset;

/// Turns a time of the loaded film into the picture shown at exactly that time. A copy keeps the
/// film that it was made with.
class VideoFrameExtractorService final {
public:
    /// Takes the film from which the following requests grab. Requests under way keep theirs.
    void prepare(std::shared_ptr<const MediaAsset> asset);

    /// The picture at `time`: upright, square pixels, never a neighbour of the frame asked for.
    /// *Shape*: RGBA, 8 bits, premultiplied, colour space sRGB.
    /// *Errors*: AppError noVideoLoaded before `prepare`; AppError frameExtractionFailed with the
    /// media layer's description, also after `stop`. *Thread*: decodes on the generator's threads;
    /// answers on the caller's. *Lifetime*: the service may go while the request is under way.
    [[nodiscard]] QCoro::Task<QImage> image(CMTime time, std::stop_token stop = {});

    /// The same at once, on the calling thread; null where there is none.
    [[nodiscard]] QImage imageNow(CMTime time) const;

private:
    std::shared_ptr<const ImageGenerator> m_generator;
};

} // namespace stillwick
