// The samples of a film that are about to be heard. Any thread.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

namespace stillwick {

/// Holds a film's sound from the sample that is played next on, as far as it is decoded: filled by
/// the thread that decodes, emptied by the thread that plays. Places are counted in samples from
/// the film's zero.
class SoundWindow final {
public:
    /// What is to be decoded next; nothing where `frames` is 0.
    struct Need {
        std::int64_t start = 0;
        int frames = 0;
    };

    /// An empty window from the sample `start` on, for so many samples of each channel.
    SoundWindow(int channels, int frames, std::int64_t start);

    [[nodiscard]] Need need() const;
    /// The samples of each channel that are held.
    [[nodiscard]] int held() const;
    /// Takes what was decoded for `need`; dropped where the window has moved elsewhere meanwhile.
    void append(std::int64_t start, const float* samples, int frames);

    /// Moves to `start` and lets go of what lies before it.
    void moveTo(std::int64_t start);
    /// Gives the samples from `start` on, wherever that is, and moves past them; silence where they
    /// are not held.
    void take(std::int64_t start, float* samples, int frames);

private:
    void moveToLocked(std::int64_t start);
    [[nodiscard]] float* frameAt(std::int64_t place);

    const int m_channels;
    const int m_capacity;
    mutable std::mutex m_mutex;
    std::vector<float> m_ring; ///< the sample of place p lies at p modulo the capacity
    std::int64_t m_begin;
    std::int64_t m_end;
};

} // namespace stillwick
