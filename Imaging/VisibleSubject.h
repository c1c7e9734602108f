// What of a picture is visible, ready for filters that look at neighbours. Any thread.
#pragma once

#include <QImage>
#include <QSize>

#include <functional>

namespace stillwick {

/// The visible part of a picture with a margin around it. Depends on nothing that cannot be seen:
/// neither on hidden colours nor on how much emptiness surrounds the subject.
struct VisibleSubject {
    /// Opaque colours; hidden pixels carry that of the nearest visible one. Format_RGB888.
    QImage colors;
    /// The subject's alpha, 0 in the margin. Format_Grayscale8, of the colours' size.
    QImage alpha;
    /// Pixels of the picture to one pixel of the drawing; at least 1. Strokes and dots keep their
    /// size in relation to a large subject.
    double scale = 1;

    /// The size of the drawing where one of its pixels stands for `coarseness` by `coarseness`.
    [[nodiscard]] QSize drawingSize(double coarseness = 1) const;
};

/// Draws the colours of a subject anew; the drawing has their size and format.
using SubjectDrawing = std::function<QImage(const VisibleSubject&)>;

/// The drawing of what is visible in `image`, on white.
/// *Shape*: the picture may have any format; the result is Format_RGBA8888, opaque everywhere, with
/// the picture's size and colour space.
/// *Errors*: a null picture where there is none, no memory, or the drawing failed.
[[nodiscard]] QImage colorLayer(const QImage& image, const SubjectDrawing& draw);

} // namespace stillwick
