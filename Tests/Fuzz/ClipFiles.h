// The clips of the tests as bytes.
#pragma once

#include "Fuzz/FilmParts.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace stillwick {

inline Bytes bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline Bytes clip(const std::string& name) {
    return bytesOf(std::filesystem::path(STILLWICK_CLIPS) / "films" / name);
}

/// In an order that is always the same.
inline std::vector<std::filesystem::path> clipPaths() {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(STILLWICK_CLIPS "/films"))
        paths.push_back(entry.path());
    std::ranges::sort(paths);
    return paths;
}

} // namespace stillwick
