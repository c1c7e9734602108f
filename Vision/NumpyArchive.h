// Arrays of numbers out of a file of NumPy's, for the weights of the network. Internal to Vision.
// Immutable value, any thread.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace stillwick {

/// An array of single precision, the last index the fastest.
struct NumberArray {
    std::vector<int> shape;
    std::vector<float> values;
};

/// The arrays of an archive as `numpy.savez` writes it, not compressed: half and single precision,
/// and bytes. Arrays of other kinds are left out.
class NumpyArchive final {
public:
    /// The archive in these bytes; none where they are damaged: every entry is checked against its
    /// CRC-32.
    /// *Source*: PKWARE APPNOTE 6.3 (the directory at the end); NumPy's npy format, version 1.
    [[nodiscard]] static std::optional<NumpyArchive> read(std::span<const std::byte> bytes);

    /// The array of that name; null where there is none.
    [[nodiscard]] const NumberArray* find(std::string_view name) const;

    /// Whether an array of numbers has a name that begins like this.
    [[nodiscard]] bool holdsAny(std::string_view prefix) const;

    /// The array of bytes of that name; empty where there is none.
    [[nodiscard]] std::string_view text(std::string_view name) const;

private:
    std::map<std::string, NumberArray, std::less<>> m_arrays;
    std::map<std::string, std::string, std::less<>> m_texts;
};

} // namespace stillwick
