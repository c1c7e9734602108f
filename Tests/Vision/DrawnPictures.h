// Pictures drawn for the tests of Vision, whose subjects are known because the test drew them.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace stillwick {

/// A picture of `size` whose pixels are `colour(x, y)`, opaque, in sRGB.
[[nodiscard]] QImage painted(QSize size, const std::function<QColor(int x, int y)>& colour);

/// A disc, as a drawing of a subject.
struct Disc {
    QPointF middle;
    double radius = 0;
    QColor colour;

    /// Whether the middle of pixel (x, y) lies in the disc.
    [[nodiscard]] bool contains(int x, int y) const;
};

/// Discs on a lightly textured green ground.
[[nodiscard]] QImage discsOnGrass(QSize size, const std::vector<Disc>& discs);

/// A picture that shows no subject, with a name for messages.
struct PlainPicture {
    QString name;
    QImage picture;
};

/// Walls, gradients, noise, stripes and checks.
[[nodiscard]] std::vector<PlainPicture> simplePictures();

/// Skies, plaster, wood, water, grass, cloth and more, each in several kinds.
[[nodiscard]] std::vector<PlainPicture> surfaces();

/// All of the above.
[[nodiscard]] std::vector<PlainPicture> picturesWithoutSubject();

/// A well mixed number from 0 to 1 for each pixel, the same on every machine.
[[nodiscard]] double noiseAt(int x, int y, std::uint32_t seed);

/// Noise that varies over `grain` pixels, from 0 to 1. *Shape*: x and y not negative.
[[nodiscard]] double cloudAt(int x, int y, int grain, std::uint32_t seed);

/// The colour at `part`, 0 to 1, of the way from one to another.
[[nodiscard]] QColor between(const QColor& a, const QColor& b, double part);

} // namespace stillwick
