#include "Imaging/AlphaMask.h"

#include "Imaging/StraightAlpha.h"

#include <array>
#include <bit>

namespace stillwick {

namespace {

/// The bytes of a pixel's colour, whatever the order of bytes in a word.
constexpr auto colorBytes = std::bit_cast<quint32>(std::array<uchar, 4>{255, 255, 255, 0});

void maskRow(const quint32* color, quint32* subject, int pixels) {
    for (int x = 0; x < pixels; ++x) {
        const quint32 alpha = subject[x] & ~colorBytes;
        subject[x] = alpha == 0 ? 0 : (color[x] & colorBytes) | alpha;
    }
}

} // namespace

QImage withAlphaOf(const QImage& color, const QImage& subject) {
    const QImage colors = withStraightAlpha(color);
    QImage result = withStraightAlpha(subject);
    if (colors.isNull() || colors.size() != result.size() || result.bits() == nullptr)
        return {};
    for (int y = 0; y < result.height(); ++y)
        maskRow(reinterpret_cast<const quint32*>(colors.constScanLine(y)),
                reinterpret_cast<quint32*>(result.scanLine(y)), result.width());
    return result;
}

} // namespace stillwick
