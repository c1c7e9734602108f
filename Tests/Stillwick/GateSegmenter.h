// A segmenter that lets no picture through before it is told to.
#pragma once

#include "ColumnSegmenter.h"
#include "Vision/VisionError.h"

#include <condition_variable>
#include <mutex>
#include <vector>

namespace stillwick::testing {

/// Finds the left third of a picture, when the gate is opened for it.
class GateSegmenter final : public ForegroundSegmenter {
public:
    [[nodiscard]] Foreground segment(const QImage& picture, std::stop_token stop) const override {
        {
            std::unique_lock lock(m_mutex);
            ++m_waiting;
            m_changed.wait(lock, stop, [this] { return m_permits > 0; });
            --m_waiting;
            if (stop.stop_requested())
                throw VisionError(VisionError::Category::Cancelled);
            --m_permits;
        }
        return ColumnSegmenter({picture.width() / 3}).segment(picture, stop);
    }

    /// Lets so many pictures through.
    void open(int count) {
        const std::lock_guard lock(m_mutex);
        m_permits += count;
        m_changed.notify_all();
    }
    /// Pictures in front of the gate.
    [[nodiscard]] int waiting() const {
        const std::lock_guard lock(m_mutex);
        return m_waiting;
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable_any m_changed;
    mutable int m_permits = 0;
    mutable int m_waiting = 0;
};

} // namespace stillwick::testing
