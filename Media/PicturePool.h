// Memory for bitmaps, used again once a bitmap is gone. Any thread.
#pragma once

#include <QImage>

#include <memory>

namespace stillwick {

/// Hands out bitmaps of one size after the other without asking the system for fresh memory each
/// time, which at 4K costs as much as filling it (measured: 6 of 20 ms).
class PicturePool final {
public:
    PicturePool();

    /// An RGBA bitmap, 8 bits, premultiplied, with undefined pixels; null where memory fails.
    /// *Lifetime*: may outlive the pool.
    [[nodiscard]] QImage take(int width, int height);

private:
    struct Shelf;
    struct Loan;

    std::shared_ptr<Shelf> m_shelf;
};

} // namespace stillwick
