// What a fuzz target once failed on, or nearly.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

// The name is the library's.
extern "C" int LLVMFuzzerTestOneInput( // NOLINT(readability-identifier-naming)
    const std::uint8_t* data, std::size_t size);

namespace stillwick::testing {

enum class Found { Films, Projects };

/// Gives the fuzz target that this program is linked with each such input; one that it fails on
/// ends the program. Returns how many there were.
inline int giveAll(Found found) {
    int count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(STILLWICK_SOURCE_DIR "/Fuzz/crashes")) {
        if ((entry.path().extension() == ".stillwick") != (found == Found::Projects))
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
        SCOPED_TRACE(entry.path());
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()),
                                         input.size()),
                  0);
        ++count;
    }
    return count;
}

} // namespace stillwick::testing
