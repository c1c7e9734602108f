// The wish for the subjects of a picture, and after its performance their masks. Owned by whoever
// asks; one thread at a time.
#pragma once

#include "Vision/ForegroundSegmenter.h"
#include "Vision/InstanceMaskObservation.h"

#include <memory>
#include <utility>
#include <vector>

namespace stillwick {

/// Asks an `ImageRequestHandler` for the foreground instances of its picture.
class GenerateForegroundInstanceMaskRequest final {
public:
    explicit GenerateForegroundInstanceMaskRequest(
        std::shared_ptr<const ForegroundSegmenter> segmenter = standardSegmenter())
        : m_segmenter(std::move(segmenter)) {}

    /// One observation; none before a performance, after a failed one, and where the picture shows
    /// no subject.
    [[nodiscard]] const std::vector<InstanceMaskObservation>& results() const noexcept {
        return m_results;
    }

private:
    friend class ImageRequestHandler;

    std::shared_ptr<const ForegroundSegmenter> m_segmenter;
    std::vector<InstanceMaskObservation> m_results;
};

} // namespace stillwick
