// Archives of NumPy's own making; Tests/Vision/make-small-network wrote them.
#include "Vision/NumpyArchive.h"

#include "FileBytes.h"

#include <gtest/gtest.h>

namespace stillwick {
namespace {

using testing::bytesOfFile;

TEST(NumpyArchiveTest, ArraysComeWithShapeAndNumbers) {
    const std::vector<std::byte> bytes = bytesOfFile("small-answer.npz");
    const auto archive = NumpyArchive::read(bytes);
    ASSERT_TRUE(archive);
    const NumberArray* picture = archive->find("picture");
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->shape, (std::vector{32, 64, 3}));
    EXPECT_EQ(picture->values.size(), 32U * 64 * 3);
    EXPECT_EQ(archive->find("nothing"), nullptr);
}

TEST(NumpyArchiveTest, HalfPrecisionAndTextAreRead) {
    const std::vector<std::byte> bytes = bytesOfFile("small-network.npz");
    const auto archive = NumpyArchive::read(bytes);
    ASSERT_TRUE(archive);
    const NumberArray* weights = archive->find("down.0.0.0.weight");
    ASSERT_NE(weights, nullptr);
    EXPECT_EQ(weights->shape, (std::vector{4, 3, 3, 3}));
    EXPECT_EQ(archive->text("figures"), R"({"side": 64, "heads": ["mask", "edge"]})");
    EXPECT_EQ(archive->text("nothing"), "");
}

TEST(NumpyArchiveTest, AnyDamagedByteOfTheContentIsNoticed) {
    const std::vector<std::byte> whole = bytesOfFile("small-answer.npz");
    for (std::size_t at = 300; at < whole.size() - 300; at += 997) {
        std::vector<std::byte> damaged = whole;
        damaged[at] ^= std::byte{4};
        EXPECT_FALSE(NumpyArchive::read(damaged)) << at;
    }
}

TEST(NumpyArchiveTest, NoDamageOfADirectoryReadsBeyondTheFile) {
    const std::vector<std::byte> whole = bytesOfFile("small-answer.npz");
    for (std::size_t at = whole.size() - 200; at < whole.size(); ++at)
        for (const unsigned flip : {1U, 0x80U, 0xFFU}) {
            std::vector<std::byte> damaged = whole;
            damaged[at] ^= std::byte(flip);
            static_cast<void>(NumpyArchive::read(damaged));
        }
}

TEST(NumpyArchiveTest, ATruncatedArchiveIsNone) {
    const std::vector<std::byte> whole = bytesOfFile("small-answer.npz");
    for (std::size_t length :
         {std::size_t{0}, std::size_t{1}, std::size_t{21}, whole.size() / 2, whole.size() - 1})
        EXPECT_FALSE(NumpyArchive::read(std::span(whole).first(length))) << length;
}

} // namespace
} // namespace stillwick
