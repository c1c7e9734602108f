// A drawing in black lines on white paper. Any thread.
#pragma once

#include <QImage>

namespace stillwick {

/// How lines are found. Brightness runs from 0 to 1.
struct LineOverlay {
    /// Differences of brightness below it are smoothed, larger ones sharpened.
    float noiseReductionLevel = 0;
    /// How much of a large difference is added to itself.
    float noiseReductionSharpness = 0;
    /// Factor of the strength of edges.
    float edgeIntensity = 1;
    /// The slope at which a line begins; that of a sharp step is twice its height.
    float threshold = 0;
    /// How fast ink grows beyond the threshold.
    float contrast = 1;
};

/// The edges of the visible subject, and its silhouette, as black lines on white.
/// *Shape*: any format in; Format_RGBA8888 out, opaque everywhere, grey, of the picture's size and
/// colour space.
/// *Errors*: a null picture where there is none, or no memory.
/// *Source*: I. Sobel and G. Feldman, "A 3×3 isotropic gradient operator" (1968), for the edges;
/// J.-S. Lee, "Digital image enhancement and noise filtering by use of local statistics" (1980);
/// J. Canny, "A computational approach to edge detection" (1986), for following weaker edges.
[[nodiscard]] QImage lineOverlay(const QImage& image, const LineOverlay& parameters);

} // namespace stillwick
