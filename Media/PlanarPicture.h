// Pictures as separate planes, laid out as the conversion library wants them. One thread at a time.
#pragma once

#include "Media/VideoFrame.h"

#include <array>
#include <cstddef>
#include <memory>

namespace stillwick {

/// Up to four planes of samples of 1, 2 or 4 bytes, each row aligned to 64 bytes. Owns them, or
/// keeps the frame that does.
class PlanarPicture final {
public:
    static constexpr std::size_t alignment = 64;

    struct Layout {
        int width = 0;
        int height = 0;
        int planes = 3;
        int bytesPerSample = 1;
        int chromaShiftX = 0; ///< of planes 1 and 2
        int chromaShiftY = 0;
        bool operator==(const Layout&) const = default;
        [[nodiscard]] int widthOf(int plane) const noexcept;
        [[nodiscard]] int heightOf(int plane) const noexcept;
    };

    /// Planes with undefined samples. *Errors*: std::bad_alloc.
    explicit PlanarPicture(const Layout& layout);
    /// The frame's own planes where they are aligned and the size is a multiple of the chroma's,
    /// else a copy whose right and lower edge are continued to such a size. The pixel format is
    /// planar (see `planarFormatFor`).
    [[nodiscard]] static PlanarPicture of(const AVFrame& frame);

    [[nodiscard]] const Layout& layout() const noexcept { return m_layout; }
    [[nodiscard]] std::uint8_t* row(int plane, int y) const noexcept {
        return m_data[std::size_t(plane)] + m_stride[std::size_t(plane)] * y;
    }
    /// The samples of one row of pixels in each plane; null for planes that are not there.
    using Row = std::array<const std::uint8_t*, 4>;
    /// Of a picture without subsampled chroma.
    [[nodiscard]] Row rowsAt(int y) const noexcept {
        Row rows{};
        for (int plane = 0; plane < m_layout.planes; ++plane)
            rows[std::size_t(plane)] = row(plane, y);
        return rows;
    }
    [[nodiscard]] std::uint8_t* data(int plane) const noexcept {
        return m_data[std::size_t(plane)];
    }
    [[nodiscard]] std::ptrdiff_t stride(int plane) const noexcept {
        return m_stride[std::size_t(plane)];
    }
    /// Every second row, as a picture of half the height that shares the samples.
    [[nodiscard]] PlanarPicture field(int parity) const;
    /// The upper left part of a picture without subsampled chroma, sharing the samples.
    [[nodiscard]] PlanarPicture cropped(int width, int height) const;

private:
    PlanarPicture() = default;

    Layout m_layout;
    std::array<std::uint8_t*, 4> m_data{};
    std::array<std::ptrdiff_t, 4> m_stride{};
    std::shared_ptr<const void> m_owner;
};

/// The planar format that holds all that `format` holds; `format` itself where it is one already.
[[nodiscard]] AVPixelFormat planarFormatFor(AVPixelFormat format);

/// A frame in `planarFormatFor` its format; the frame itself where it is in it.
/// *Errors*: MediaError Unsupported.
[[nodiscard]] libav::Frame toPlanar(const AVFrame& frame);

} // namespace stillwick
