// Growing and shrinking planes of opacity by a disc. Any thread.
#pragma once

#include <QImage>

namespace stillwick {

/// The plane in which each value is the greatest within a disc around it; what lies outside the
/// plane counts as 0. A grey edge stays as grey as it was.
/// *Shape*: Format_Alpha8 in and out, of the same size.
/// *Units*: the radius in pixels, 0 or more, also between whole numbers: values as far as the
/// radius count whole, and fade to nothing over one pixel more, so that a straight edge of full
/// opacity moves by the radius exactly. *Errors*: std::bad_alloc. *Source*: Serra, Image Analysis
/// and Mathematical Morphology (1982), chapter XII; Bloch and Maître, Fuzzy mathematical
/// morphologies (1995), for the faded rim.
[[nodiscard]] QImage dilatedByDisc(const QImage& plane, double radiusPixels);

/// The plane in which each value is the least within a disc around it: the same as growing what is
/// not there. What lies outside the plane counts as 0, so that it shrinks from its borders too.
/// *Shape*, *Units*, *Errors*, *Source*: as `dilatedByDisc`.
[[nodiscard]] QImage erodedByDisc(const QImage& plane, double radiusPixels);

} // namespace stillwick
