// Damage to films that knows how their containers are made up. Free functions, any thread.
#pragma once

#include "Fuzz/FilmParts.h"

#include <functional>

namespace stillwick {

/// Changes `size` bytes at `data`, which has room for `room`, at least one; gives how many there
/// are then. As libFuzzer's own.
using ByteDamage =
    std::function<std::size_t(std::uint8_t* data, std::size_t size, std::size_t room)>;

/// The film with up to six faults: parts that are dropped, repeated, moved, cut, nested, renamed;
/// sizes that lie; numbers that are wrong, the largest, or negative; changed bytes; an early end.
/// Sizes and checksums are mostly made to fit again, so that what reads the film gets as far as
/// the faults. The same film and seed give the same bytes; never the film itself, and never more
/// than `largest`, at least one. Plain bytes are changed by `damageBytes`, or by chance alone
/// without one.
[[nodiscard]] Bytes damagedFilm(BytesView film, std::size_t largest, std::uint32_t seed,
                                const ByteDamage& damageBytes = {});

} // namespace stillwick
