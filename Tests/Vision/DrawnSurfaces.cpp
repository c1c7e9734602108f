#include "DrawnPictures.h"

#include <array>
#include <cmath>

namespace stillwick {
namespace {

constexpr QSize surfaceSize(240, 160);

// Noise of several grains on top of each other, from 0 to 1.
double fractalAt(int x, int y, int grain, std::uint32_t seed) {
    double sum = 0;
    double share = .5;
    for (int g = grain; g >= 1; g /= 2) {
        sum += share * cloudAt(x, y, g, seed++);
        share /= 2;
    }
    return sum / (1 - share * 2 + 1e-9);
}

using Paint = std::function<QColor(int, int)>;

class Painter final {
public:
    explicit Painter(std::vector<PlainPicture>& pictures) : m_pictures(pictures) {}
    void add(const std::string& name, const Paint& paint) {
        m_pictures.push_back({QString::fromStdString(name), painted(surfaceSize, paint)});
    }

private:
    std::vector<PlainPicture>& m_pictures;
};

void addSkies(Painter& painter) {
    struct Sky {
        const char* name;
        QColor above;
        QColor below;
    };
    const std::array skies{Sky{"clear sky", {40, 100, 200}, {190, 215, 240}},
                           Sky{"evening sky", {60, 60, 110}, {240, 150, 90}},
                           Sky{"grey sky", {150, 155, 160}, {190, 192, 195}},
                           Sky{"night sky", {5, 8, 20}, {25, 30, 55}}};
    std::uint32_t seed = 100;
    for (const Sky& sky : skies) {
        ++seed;
        painter.add(sky.name, [&sky, seed](int x, int y) {
            return between(sky.above, sky.below, y / 160.0 + .01 * noiseAt(x, y, seed));
        });
        painter.add(std::string(sky.name) + " with haze", [&sky, seed](int x, int y) {
            const QColor air = between(sky.above, sky.below, y / 160.0);
            return between(air, {225, 225, 228}, .35 * fractalAt(x, y * 2, 64, seed));
        });
    }
}

void addGrounds(Painter& painter) {
    struct Ground {
        const char* name;
        QColor dark;
        QColor light;
        int grain;
    };
    const std::array grounds{
        Ground{"sand", {180, 150, 110}, {225, 200, 160}, 4},
        Ground{"asphalt", {60, 60, 62}, {120, 120, 122}, 3},
        Ground{"lawn", {40, 80, 30}, {110, 150, 60}, 4},
        Ground{"earth", {70, 50, 35}, {140, 105, 75}, 8},
        Ground{"snow", {215, 220, 230}, {250, 252, 255}, 16},
        Ground{"concrete", {130, 130, 128}, {175, 174, 170}, 24},
        Ground{"carpet", {90, 30, 40}, {140, 55, 65}, 2},
        Ground{"foliage", {15, 40, 15}, {120, 160, 70}, 12},
        Ground{"granite", {70, 70, 75}, {210, 205, 205}, 2},
        Ground{"fog", {200, 203, 205}, {225, 226, 228}, 80},
        Ground{"rust", {110, 50, 25}, {190, 110, 60}, 20},
        Ground{"paper", {235, 232, 222}, {250, 248, 242}, 6},
    };
    std::uint32_t seed = 200;
    for (const Ground& ground : grounds) {
        seed += 10;
        painter.add(ground.name, [&ground, seed](int x, int y) {
            return between(ground.dark, ground.light, fractalAt(x, y, ground.grain, seed));
        });
    }
}

void addSurfacesWithDirection(Painter& painter) {
    painter.add("wood", [](int x, int y) {
        const double ring = std::sin(y / 5.0 + 3 * fractalAt(x / 6, y, 16, 401));
        return between({120, 80, 45}, {185, 135, 85}, .5 + .3 * ring + .2 * noiseAt(x / 9, y, 402));
    });
    painter.add("planks", [](int x, int y) {
        const bool gap = y % 26 < 2;
        return gap ? QColor(60, 40, 25)
                   : between({140, 95, 60}, {180, 130, 85},
                             .6 * cloudAt(x / 8, y, 4, 403) + .4 * noiseAt(0, y / 26, 404));
    });
    painter.add("water", [](int x, int y) {
        const double wave = std::sin(y / 4.0 + 4 * fractalAt(x / 3, y, 24, 405));
        return between({25, 70, 100}, {110, 160, 180}, .5 + .35 * wave);
    });
    painter.add("sea and sky", [](int x, int y) {
        return y < 75 ? between({120, 165, 215}, {215, 228, 240}, y / 75.0)
                      : between({30, 80, 110}, {80, 130, 150}, fractalAt(x / 4, y * 2, 8, 406));
    });
    painter.add("curtain", [](int x, int y) {
        const double fold = std::sin(x / 11.0 + .4 * std::sin(y / 60.0));
        return between({110, 30, 35}, {175, 65, 65}, .5 + .45 * fold);
    });
    painter.add("brushed metal", [](int x, int y) {
        return between({140, 143, 148}, {205, 207, 210}, .6 * noiseAt(x / 40, y, 407) + .2);
    });
}

void addCoverings(Painter& painter) {
    painter.add("cloth", [](int x, int y) {
        const double thread = .5 + .25 * std::sin(x * 1.3) * std::cos(y * 1.3);
        return between({50, 60, 100}, {90, 100, 145}, thread + .2 * noiseAt(x, y, 501));
    });
    painter.add("tiles", [](int x, int y) {
        const bool joint = x % 30 < 2 || y % 30 < 2;
        return joint ? QColor(150, 150, 150)
                     : between({225, 230, 232}, {240, 243, 245}, noiseAt(x / 30, y / 30, 502));
    });
    painter.add("dotted wallpaper", [](int x, int y) {
        const bool dot = std::hypot(x % 24 - 12, y % 24 - 12) < 4;
        return dot ? QColor(200, 120, 120) : QColor(240, 232, 215);
    });
    painter.add("corrugated iron", [](int x, int y) {
        return between({110, 115, 118}, {190, 195, 198},
                       .5 + .4 * std::sin(x / 4.0) + .1 * noiseAt(x, y, 503));
    });
    painter.add("chequered cloth", [](int x, int y) {
        const int bands = (x / 15 % 2) + (y / 15 % 2);
        return between({245, 245, 245}, {190, 40, 45}, bands / 2.0);
    });
    painter.add("two-tone wall", [](int x, int y) {
        return between(y < 85 ? QColor(225, 220, 205) : QColor(150, 165, 150), {128, 128, 128},
                       .05 * noiseAt(x, y, 504));
    });
}

} // namespace

std::vector<PlainPicture> surfaces() {
    std::vector<PlainPicture> pictures;
    Painter painter(pictures);
    addSkies(painter);
    addGrounds(painter);
    addSurfacesWithDirection(painter);
    addCoverings(painter);
    return pictures;
}

} // namespace stillwick
