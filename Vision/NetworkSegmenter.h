// Finds subjects by the network that Training/ trains. Immutable, any thread.
#pragma once

#include "Vision/ForegroundSegmenter.h"

#include <cstddef>
#include <memory>
#include <span>

namespace stillwick {

/// The weights that are part of the program.
/// *Lifetime*: the program's.
[[nodiscard]] std::span<const std::byte> networkWeights();

/// A segmenter with these weights, which are needed during the call only; null where they are
/// damaged. All searches share the one network; each takes memory of its own.
[[nodiscard]] std::shared_ptr<const ForegroundSegmenter>
networkSegmenter(std::span<const std::byte> weights);

} // namespace stillwick
