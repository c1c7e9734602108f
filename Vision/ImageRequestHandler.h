// Performs vision requests on one picture. A value, owned by whoever asks; any thread.
#pragma once

#include <QImage>

#include <stop_token>

namespace stillwick {

class GenerateForegroundInstanceMaskRequest;

/// A picture, ready to be asked about.
class ImageRequestHandler final {
public:
    /// Takes any picture; keeps its colour space.
    explicit ImageRequestHandler(const QImage& picture);

    /// Fills the results of `request`.
    /// *Errors*: VisionError (EmptyPicture, SegmentationFailed, OutOfMemory; Cancelled soon after
    /// `stop`); the request then has no results.
    void perform(GenerateForegroundInstanceMaskRequest& request, std::stop_token stop = {}) const;

    /// *Shape*: Format_RGBA8888_Premultiplied.
    [[nodiscard]] const QImage& picture() const noexcept { return m_picture; }

private:
    QImage m_picture;
};

} // namespace stillwick
