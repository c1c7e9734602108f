#include "Vision/Tiles.h"

namespace stillwick {
namespace {

constexpr int tileSide = 128;

} // namespace

std::vector<cv::Rect> tilesOf(cv::Size picture) {
    std::vector<cv::Rect> tiles;
    for (int y = 0; y < picture.height; y += tileSide)
        for (int x = 0; x < picture.width; x += tileSide)
            tiles.push_back(cv::Rect(x, y, tileSide, tileSide) & cv::Rect({}, picture));
    return tiles;
}

cv::Rect withMargin(const cv::Rect& tile, int margin, cv::Size picture) {
    return cv::Rect(tile.x - margin, tile.y - margin, tile.width + 2 * margin,
                    tile.height + 2 * margin) &
           cv::Rect({}, picture);
}

} // namespace stillwick
