// How libFuzzer damages films: by the parts of their containers, and plain bytes as it always does.
#include "Fuzz/FilmDamage.h"

#include <algorithm>

// NOLINTBEGIN(readability-identifier-naming): libFuzzer's names
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t room);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t room, unsigned seed) {
    const stillwick::Bytes damaged =
        stillwick::damagedFilm({data, size}, room, seed, LLVMFuzzerMutate);
    std::ranges::copy(damaged, data);
    return damaged.size();
}
// NOLINTEND(readability-identifier-naming)
