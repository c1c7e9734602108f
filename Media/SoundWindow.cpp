#include "Media/SoundWindow.h"

#include <algorithm>

namespace stillwick {

SoundWindow::SoundWindow(int channels, int frames, std::int64_t start)
    : m_channels(channels), m_capacity(frames), m_ring(std::size_t(channels) * std::size_t(frames)),
      m_begin(start), m_end(start) {}

SoundWindow::Need SoundWindow::need() const {
    const std::lock_guard lock(m_mutex);
    return {m_end, m_capacity - int(m_end - m_begin)};
}

int SoundWindow::held() const {
    const std::lock_guard lock(m_mutex);
    return int(m_end - m_begin);
}

float* SoundWindow::frameAt(std::int64_t place) {
    const std::int64_t index = (place % m_capacity + m_capacity) % m_capacity;
    return m_ring.data() + index * m_channels;
}

void SoundWindow::append(std::int64_t start, const float* samples, int frames) {
    const std::lock_guard lock(m_mutex);
    if (start != m_end || frames > m_capacity - (m_end - m_begin))
        return;
    for (; frames > 0; --frames, ++m_end, samples += m_channels)
        std::copy_n(samples, m_channels, frameAt(m_end));
}

void SoundWindow::moveTo(std::int64_t start) {
    const std::lock_guard lock(m_mutex);
    moveToLocked(start);
}

void SoundWindow::moveToLocked(std::int64_t start) {
    if (start < m_begin || start > m_end)
        m_end = start;
    m_begin = start;
}

void SoundWindow::take(std::int64_t start, float* samples, int frames) {
    const std::lock_guard lock(m_mutex);
    moveToLocked(start);
    const std::int64_t present = std::min<std::int64_t>(frames, m_end - start);
    for (std::int64_t i = 0; i < present; ++i, samples += m_channels)
        std::copy_n(frameAt(start + i), m_channels, samples);
    std::fill_n(samples, (frames - present) * m_channels, 0.0F);
    moveToLocked(start + frames);
}

} // namespace stillwick
