// The sound of a film as samples at film times. One thread at a time.
#pragma once

#include "Media/Libav.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace stillwick {

class SoundDecoder;

/// Gives a film's sound for any stretch of time, also where there is none: before it begins, in
/// gaps, in damaged places and after its end it is silence.
class SoundTrack final {
public:
    /// The sound of the film at `path`, resampled and mixed to this rate and these channels; null
    /// where there is none that can be decoded. `zero` is the time in the container that is the
    /// film's zero. `stop` ends opening, and all reading later on.
    /// *Errors*: MediaError of every category that concerns opening a container.
    [[nodiscard]] static std::unique_ptr<SoundTrack> open(const QString& path, int sampleRate,
                                                          int channels,
                                                          std::chrono::nanoseconds zero,
                                                          std::stop_token stop);
    ~SoundTrack();

    /// Makes `read` go on from the sample nearest to `filmTime`.
    void seek(std::chrono::nanoseconds filmTime);
    /// The next `frames` samples of each channel, interleaved. Always fills all of them; what
    /// cannot be read any more is silence.
    /// *Shape*: 32-bit float, full scale ±1, in libav*'s default order of that many channels.
    void read(float* samples, int frames);

private:
    /// Consecutive samples in the form in which they are given.
    struct Stretch {
        std::int64_t start = 0; ///< counted from the film's zero
        std::vector<float> samples;
    };
    /// The form of the decoder's frames.
    struct Form {
        int rate = 0;
        int format = -1;
        std::uint64_t mask = 0;
        int channels = 0;
        bool operator==(const Form&) const = default;
    };

    SoundTrack(std::unique_ptr<SoundDecoder> decoder, int sampleRate, int channels,
               std::chrono::nanoseconds zero);
    [[nodiscard]] bool learnGrid();
    void decodeMore();
    void place(const AVFrame& frame);
    void beginRun(const AVFrame& frame, std::int64_t start);
    void endRun();
    void convert(const AVFrame* frame);
    void dropUntilPosition();
    [[nodiscard]] int take(float* samples, int frames);
    [[nodiscard]] std::optional<std::int64_t> timeOf(const AVFrame& frame) const;
    [[nodiscard]] std::int64_t onGrid(std::int64_t start, int rate) const;

    std::unique_ptr<SoundDecoder> m_decoder;
    int m_sampleRate;
    int m_channels;
    std::chrono::nanoseconds m_zero;

    std::int64_t m_position = 0; ///< of the sample that `read` gives next
    std::deque<Stretch> m_stretches;
    bool m_isAtEnd = false;

    // A run is what is decoded without a gap: its samples are counted, for time stamps are rounded.
    libav::Resampler m_resampler; ///< null between runs
    Form m_form;
    std::int64_t m_decoded = 0; ///< where the run's next frame belongs, at the decoder's rate
    std::int64_t m_given = 0;   ///< where the run's next sample goes

    // Where frames begin that are all of one size, at the decoder's rate; of size 0 where unknown.
    std::int64_t m_gridStart = 0;
    int m_gridSize = 0;
};

} // namespace stillwick
