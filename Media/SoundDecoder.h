// The packets of a film's sound, decoded. One thread at a time.
#pragma once

#include "Media/Libav.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>

namespace stillwick {

/// Reads the sound that a film is played with, the one track that libav* finds best.
class SoundDecoder final {
public:
    /// Null where the film has no sound that can be decoded. `stop` ends all reading, also later.
    /// *Errors*: MediaError of every category that concerns opening a container.
    [[nodiscard]] static std::unique_ptr<SoundDecoder> open(const QString& path,
                                                            std::stop_token stop);

    /// The next frame, without the encoder's padding; null at the end, and where no more can be
    /// read. Damaged packets give no frame.
    [[nodiscard]] libav::Frame next();

    /// Moves to a place from which `next` gives frames that are as they would be had all before
    /// been decoded: so far before `time` (the container's) that decoders have settled there.
    void seekBefore(std::chrono::nanoseconds time);

    /// The unit of the frames' `pts`, which may be missing.
    [[nodiscard]] AVRational timeBase() const noexcept { return m_stream->time_base; }

private:
    /// By what a packet is known again.
    struct Identity {
        std::int64_t time = AV_NOPTS_VALUE;
        std::int64_t position = -1;
        int size = 0;
        std::size_t skippedSize = 0; ///< of the note on samples to be skipped
        bool operator==(const Identity&) const = default;
    };

    SoundDecoder(QString path, std::stop_token stop);
    /// Opens the file anew; without its codec where that fails.
    [[nodiscard]] bool openTrack();
    [[nodiscard]] bool openCodec(const AVCodec& codec);
    [[nodiscard]] libav::Packet readFromContainer();
    [[nodiscard]] libav::Packet readPacket();
    [[nodiscard]] libav::Frame receive();
    void sendPacket();
    void rewind();
    [[nodiscard]] bool landsBefore(std::chrono::nanoseconds time, std::chrono::nanoseconds place);
    [[nodiscard]] static Identity identityOf(const AVPacket& packet);
    [[nodiscard]] std::int64_t inStreamUnits(std::chrono::nanoseconds time) const;
    [[nodiscard]] bool isBeforeUse(const AVPacket& packet) const;

    QString m_path;
    std::unique_ptr<std::stop_token> m_stop; // at a fixed address: libav* holds it
    libav::FormatContext m_format;
    AVStream* m_stream = nullptr;
    AVStream* m_seekStream = nullptr; ///< by whose index the container is sought
    libav::CodecContext m_codec;
    libav::Packet m_pushedBack;
    Identity m_firstPacket;
    std::optional<std::int64_t> m_useFrom; ///< packets before it need not be decoded
    bool m_isDrained = false;
};

} // namespace stillwick
