// A segmenter whose answer is known beforehand.
#pragma once

#include "Vision/ForegroundSegmenter.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace stillwick::testing {

/// Splits the picture into columns of the given widths, each an instance, from the left; what is
/// beyond them is background. Notes how it was called.
class ColumnSegmenter final : public ForegroundSegmenter {
public:
    explicit ColumnSegmenter(std::vector<int> widths) : m_widths(std::move(widths)) {}

    [[nodiscard]] Foreground segment(const QImage& picture, std::stop_token) const override {
        ++calls;
        onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        Foreground found{QImage(picture.size(), QImage::Format_Grayscale8),
                         QImage(picture.size(), QImage::Format_Grayscale8),
                         static_cast<int>(m_widths.size())};
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const int label = labelAt(x);
                found.labels.scanLine(y)[x] = static_cast<uchar>(label);
                found.alpha.scanLine(y)[x] = label > 0 ? 255 : 0;
            }
        return found;
    }

    mutable std::atomic<int> calls = 0;
    mutable std::atomic<bool> onMainThread = false;

private:
    [[nodiscard]] int labelAt(int x) const {
        int end = 0;
        for (std::size_t i = 0; i < m_widths.size(); ++i) {
            end += m_widths[i];
            if (x < end)
                return static_cast<int>(i) + 1;
        }
        return 0;
    }

    std::vector<int> m_widths;
};

/// Finds nothing.
inline std::shared_ptr<const ForegroundSegmenter> blindSegmenter() {
    return std::make_shared<const ColumnSegmenter>(std::vector<int>{});
}

} // namespace stillwick::testing
