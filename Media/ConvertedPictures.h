// Bitmaps of the frames around the one shown. One thread at a time.
#pragma once

#include "Media/PictureConverter.h"

#include <QImage>

#include <deque>

namespace stillwick {

/// Keeps the pictures converted lately or ahead: that of the frame shown, and of its two
/// neighbours.
class ConvertedPictures final {
public:
    [[nodiscard]] bool has(const VideoFrame& frame) const;
    /// Converts the frame unless its picture is kept. *Errors*: MediaError, as PictureConverter's.
    /// *Lifetime*: of the reference, until the next call.
    [[nodiscard]] const QImage& of(const SharedFrame& frame);

private:
    struct Picture {
        SharedFrame frame;
        QImage image;
    };

    PictureConverter m_converter;
    std::deque<Picture> m_pictures; ///< the one asked for last is last
};

} // namespace stillwick
