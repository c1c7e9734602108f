#include "Media/PicturePool.h"

#include <cstdlib>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

namespace stillwick {

namespace {

constexpr std::size_t maximumIdle = 2;
constexpr std::size_t alignment = 64;

struct Free {
    void operator()(uchar* memory) const noexcept { std::free(memory); }
};
using Memory = std::unique_ptr<uchar, Free>;

} // namespace

struct PicturePool::Shelf {
    std::mutex mutex;
    std::size_t size = 0; // of each; guarded by mutex, as the following
    std::vector<Memory> idle;

    [[nodiscard]] Memory take(std::size_t wanted) {
        {
            const std::lock_guard lock(mutex);
            if (wanted != size)
                idle.clear();
            size = wanted;
            if (!idle.empty()) {
                Memory memory = std::move(idle.back());
                idle.pop_back();
                return memory;
            }
        }
        return Memory(static_cast<uchar*>(std::aligned_alloc(alignment, wanted)));
    }

    void putBack(Memory memory, std::size_t itsSize) {
        const std::lock_guard lock(mutex);
        if (itsSize == size && idle.size() < maximumIdle)
            idle.push_back(std::move(memory));
    }
};

/// What a bitmap holds of the pool.
struct PicturePool::Loan {
    std::shared_ptr<Shelf> shelf;
    Memory memory;
    std::size_t size = 0;

    static void end(void* loan) {
        const std::unique_ptr<Loan> ended(static_cast<Loan*>(loan));
        ended->shelf->putBack(std::move(ended->memory), ended->size);
    }
};

PicturePool::PicturePool() : m_shelf(std::make_shared<Shelf>()) {}

QImage PicturePool::take(int width, int height) {
    constexpr std::size_t bytesPerPixel = 4;
    if (width <= 0 || height <= 0 || width > std::numeric_limits<int>::max() / 4)
        return {};
    const std::size_t size =
        (std::size_t(width) * std::size_t(height) * bytesPerPixel + alignment - 1) / alignment *
        alignment;
    auto loan = std::make_unique<Loan>();
    loan->shelf = m_shelf;
    loan->size = size;
    loan->memory = m_shelf->take(size);
    if (!loan->memory)
        return {};
    uchar* const pixels = loan->memory.get();
    return {pixels,
            width,
            height,
            qsizetype(width) * qsizetype(bytesPerPixel),
            QImage::Format_RGBA8888_Premultiplied,
            &Loan::end,
            loan.release()};
}

} // namespace stillwick
