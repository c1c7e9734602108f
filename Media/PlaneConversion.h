// The conversion library zimg behind one operation. Any thread; a conversion is used by one at a
// time.
#pragma once

#include "Media/ColorDescription.h"
#include "Media/PlanarPicture.h"

#include <functional>
#include <memory>

struct zimg_image_buffer;

namespace stillwick {

/// One side of a conversion.
struct PlaneFormat {
    enum class Samples { Integer, Float };
    enum class Rows { All, TopField, BottomField };

    PlanarPicture::Layout layout;
    Samples samples = Samples::Integer;
    Rows rows = Rows::All;
    int depth = 8; ///< significant bits
    ColorDescription color;
    bool isGrey = false;

    /// R, G, B and, where `hasAlpha`, A: full range, 8 bits.
    [[nodiscard]] static PlaneFormat rgb(int width, int height, bool hasAlpha);
    [[nodiscard]] static PlaneFormat of(const PlanarPicture& picture, const AVFrame& frame,
                                        const ColorDescription& color);
    [[nodiscard]] bool hasAlpha() const noexcept { return layout.planes == 4; }
};

/// Converts pictures of one format to another: matrix, range, chroma position (bicubic), size
/// (Lanczos), and transfer and primaries where they differ.
class PlaneConversion final {
public:
    /// *Units*: `diffuseWhite` is the luminance, in cd/m², that linear light counts as 1.
    /// *Errors*: MediaError Unsupported.
    PlaneConversion(const PlaneFormat& from, const PlaneFormat& to, double diffuseWhite);
    ~PlaneConversion();
    PlaneConversion(PlaneConversion&&) noexcept;
    PlaneConversion& operator=(PlaneConversion&&) noexcept;

    /// *Errors*: MediaError Unsupported.
    void convert(const PlanarPicture& from, const PlanarPicture& to) const;

    /// Is given a piece of a row of the result: the samples of each plane from `left` on. Must not
    /// throw; a piece may come more than once.
    using RowHandler =
        std::function<void(int y, int left, int right, const PlanarPicture::Row& samples)>;
    /// Hands the result over row by row, so that it need not be held anywhere: what large pictures
    /// cost is the way to memory and back. *Errors*: as `convert`.
    void convertByRows(const PlanarPicture& from, const RowHandler& take) const;

private:
    struct Graph;
    struct RowTaker;

    void process(const PlanarPicture& from, const zimg_image_buffer& to, RowTaker* taker) const;

    std::unique_ptr<Graph> m_graph;
};

} // namespace stillwick
