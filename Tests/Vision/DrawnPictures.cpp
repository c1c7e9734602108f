#include "DrawnPictures.h"

#include <QColorSpace>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace stillwick {
namespace {

QColor shade(double level) {
    const int grey = std::clamp(static_cast<int>(std::lround(level)), 0, 255);
    return {grey, grey, grey};
}

constexpr QSize plainSize(320, 200);
const QColor cream(230, 220, 200);
const QColor brick(150, 80, 60);

using Paint = std::function<QColor(int, int)>;

void addWalls(std::vector<PlainPicture>& pictures) {
    const auto add = [&pictures](const char* name, const Paint& paint) {
        pictures.push_back({QString::fromLatin1(name), painted(plainSize, paint)});
    };
    add("black", [](int, int) { return QColor(0, 0, 0); });
    add("white", [](int, int) { return QColor(255, 255, 255); });
    add("red", [](int, int) { return QColor(200, 30, 30); });
    add("mid-grey", [](int, int) { return QColor(128, 128, 128); });
    add("wall with grain", [](int x, int y) { return shade(200 + 12 * noiseAt(x, y, 1)); });
    add("dark wall with grain", [](int x, int y) { return shade(20 + 20 * noiseAt(x, y, 2)); });
    add("plaster", [](int x, int y) { return shade(190 + 20 * cloudAt(x, y, 6, 3)); });
    add("cloudy wall", [](int x, int y) { return shade(150 + 30 * cloudAt(x, y, 64, 4)); });
}

void addGradients(std::vector<PlainPicture>& pictures) {
    const auto add = [&pictures](const char* name, const Paint& paint) {
        pictures.push_back({QString::fromLatin1(name), painted(plainSize, paint)});
    };
    add("gradient across", [](int x, int) { return shade(x * 255.0 / 319); });
    add("gradient down", [](int, int y) { return shade(y * 255.0 / 199); });
    add("sky", [](int, int y) { return between({60, 110, 200}, {220, 230, 250}, y / 199.0); });
    add("diagonal", [](int x, int y) { return between(brick, cream, (x + y) / 518.0); });
    add("vignette", [](int x, int y) {
        return shade(220 - 110 * std::hypot((x - 160) / 160.0, (y - 100) / 100.0));
    });
    add("soft spotlight", [](int x, int y) {
        return shade(60 + 150 * std::exp(-std::hypot(x - 160, y - 100) / 90));
    });
    add("noisy gradient", [](int x, int y) { return shade(x * 0.6 + 30 * noiseAt(x, y, 5)); });
}

void addNoise(std::vector<PlainPicture>& pictures) {
    const auto add = [&pictures](const char* name, const Paint& paint) {
        pictures.push_back({QString::fromLatin1(name), painted(plainSize, paint)});
    };
    add("grey noise", [](int x, int y) { return shade(255 * noiseAt(x, y, 6)); });
    add("colour noise", [](int x, int y) {
        return QColor(static_cast<int>(255 * noiseAt(x, y, 7)),
                      static_cast<int>(255 * noiseAt(x, y, 8)),
                      static_cast<int>(255 * noiseAt(x, y, 9)));
    });
    add("coarse noise", [](int x, int y) { return shade(255 * noiseAt(x / 4, y / 4, 10)); });
    add("clouds of noise", [](int x, int y) { return shade(255 * cloudAt(x, y, 10, 11)); });
    add("gravel", [](int x, int y) {
        return between(brick, cream, .5 * cloudAt(x, y, 5, 12) + .5 * noiseAt(x, y, 13));
    });
}

void addPatterns(std::vector<PlainPicture>& pictures) {
    const auto add = [&pictures](const char* name, const Paint& paint) {
        pictures.push_back({QString::fromLatin1(name), painted(plainSize, paint)});
    };
    for (const int width : {4, 16, 32}) {
        const auto suffix = std::to_string(width);
        add(("stripes down " + suffix).c_str(),
            [width](int x, int) { return x / width % 2 == 0 ? cream : brick; });
        add(("stripes across " + suffix).c_str(),
            [width](int, int y) { return y / width % 2 == 0 ? cream : brick; });
        add(("checks " + suffix).c_str(), [width](int x, int y) {
            return (x / width + y / width) % 2 == 0 ? QColor(30, 30, 30) : QColor(230, 230, 230);
        });
    }
    add("diagonal stripes", [](int x, int y) { return (x + y) / 20 % 2 == 0 ? cream : brick; });
    add("waves", [](int x, int) { return shade(128 + 100 * std::sin(x / 9.0)); });
    add("bricks", [](int x, int y) {
        const bool mortar = y % 20 < 3 || (x + (y / 20 % 2) * 20) % 40 < 3;
        return mortar ? cream : between(brick, {120, 60, 50}, noiseAt(x, y, 14));
    });
}

} // namespace

double noiseAt(int x, int y, std::uint32_t seed) {
    std::uint32_t h = seed * 0x9E3779B9U + static_cast<std::uint32_t>(x) * 0x85EBCA6BU +
                      static_cast<std::uint32_t>(y) * 0xC2B2AE35U;
    h = (h ^ (h >> 15U)) * 0x2C1B3C6DU;
    h = (h ^ (h >> 12U)) * 0x297A2D39U;
    return static_cast<double>(h ^ (h >> 15U)) / 4294967295.0;
}

QColor between(const QColor& a, const QColor& b, double part) {
    const auto mix = [part](int from, int to) {
        return static_cast<int>(std::lround(from + (to - from) * part));
    };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

double cloudAt(int x, int y, int grain, std::uint32_t seed) {
    const int left = x / grain;
    const int top = y / grain;
    const double fx = static_cast<double>(x % grain) / grain;
    const double fy = static_cast<double>(y % grain) / grain;
    const double upper = noiseAt(left, top, seed) * (1 - fx) + noiseAt(left + 1, top, seed) * fx;
    const double lower =
        noiseAt(left, top + 1, seed) * (1 - fx) + noiseAt(left + 1, top + 1, seed) * fx;
    return upper * (1 - fy) + lower * fy;
}

QImage painted(QSize size, const std::function<QColor(int x, int y)>& colour) {
    QImage image(size, QImage::Format_RGBA8888_Premultiplied);
    image.setColorSpace(QColorSpace(QColorSpace::SRgb));
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, colour(x, y));
    return image;
}

bool Disc::contains(int x, int y) const {
    return std::hypot(x + .5 - middle.x(), y + .5 - middle.y()) <= radius;
}

QImage discsOnGrass(QSize size, const std::vector<Disc>& discs) {
    return painted(size, [&discs](int x, int y) {
        for (const Disc& disc : discs)
            if (disc.contains(x, y))
                return disc.colour;
        return between({70, 120, 60}, {90, 140, 75}, noiseAt(x, y, 15));
    });
}

std::vector<PlainPicture> simplePictures() {
    std::vector<PlainPicture> pictures;
    addWalls(pictures);
    addGradients(pictures);
    addNoise(pictures);
    addPatterns(pictures);
    return pictures;
}

std::vector<PlainPicture> picturesWithoutSubject() {
    std::vector<PlainPicture> pictures = simplePictures();
    const std::vector<PlainPicture> more = surfaces();
    pictures.insert(pictures.end(), more.begin(), more.end());
    return pictures;
}

} // namespace stillwick
