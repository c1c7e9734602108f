// The files beside the tests of Vision.
#pragma once

#include <cstddef>
#include <vector>

namespace stillwick::testing {

/// The bytes of a file in Tests/Vision/data; none where it cannot be read.
[[nodiscard]] std::vector<std::byte> bytesOfFile(const char* name);

} // namespace stillwick::testing
