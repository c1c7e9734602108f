// Finds subjects without a network: contrast with the frame, a cut of least cost, waists between
// subjects. What the network is measured against. Stateless, any thread.
#pragma once

#include "Vision/ForegroundSegmenter.h"

namespace stillwick {

/// Works at a reduced size and refines the edge at full size.
class ClassicalSegmenter final : public ForegroundSegmenter {
public:
    [[nodiscard]] Foreground segment(const QImage& picture, std::stop_token stop) const override;
};

} // namespace stillwick
