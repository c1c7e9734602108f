// Pictures drawn for the tests of Vision, whose subjects are known because the test drew them.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>

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
[[nodiscard]] std::vector<PlainPicture> picturesWithoutSubject();

} // namespace stillwick
