// Films that once broke something, or came near to it, given to the fuzz target again.
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

namespace {

TEST(FoundFilmsTest, GiveTheirPicturesOrDocumentedErrors) {
    int count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(STILLWICK_SOURCE_DIR "/Fuzz/crashes")) {
        if (entry.path().extension() == ".stillwick")
            continue; // a project
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> film{std::istreambuf_iterator<char>(file), {}};
        SCOPED_TRACE(entry.path());
        EXPECT_EQ(
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(film.data()), film.size()),
            0); // anything else has ended this program
        ++count;
    }
    EXPECT_GT(count, 0);
}

} // namespace
