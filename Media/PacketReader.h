// The compressed packets of a film's picture track, in decode order. One thread at a time.
#pragma once

#include "Media/Libav.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>

namespace stillwick {

class PacketTable;

/// Reads the first video track of a file that is neither a cover picture nor empty.
class PacketReader final {
public:
    /// *Errors*: MediaError of every category that concerns opening.
    PacketReader(QString path, std::stop_token stop);
    ~PacketReader();
    PacketReader(PacketReader&&) noexcept;
    PacketReader& operator=(PacketReader&&) noexcept;

    /// The next packet of the track, with the timestamps of `table` where one is set; none at the
    /// end of the file.
    /// *Errors*: MediaError Cancelled when the request under way is withdrawn.
    [[nodiscard]] libav::Packet read();

    /// Moves to a place from which `read` meets the packets that decode at `timestamp`, as near
    /// before it as the container can tell. Returns false where it cannot tell; the position is
    /// then undefined.
    [[nodiscard]] bool seekBefore(std::int64_t timestamp);
    /// Moves to the first packet of the track.
    void rewind();

    /// Whether `packet` is the track's first.
    [[nodiscard]] bool isFirst(const AVPacket& packet) const;
    /// The decode time of the track's first packet, once it was read.
    [[nodiscard]] std::optional<std::int64_t> firstDecodeTime() const;

    /// Timestamps and places that replace what the container says. The track is rewound.
    void setTable(std::shared_ptr<const PacketTable> table);
    [[nodiscard]] const PacketTable* table() const noexcept { return m_table.get(); }

    /// The request on whose behalf the following calls read.
    void setStopToken(std::stop_token stop) const;
    void throwIfStopped() const;
    [[nodiscard]] const std::stop_token& stopToken() const noexcept { return *m_stop; }

    [[nodiscard]] const QString& path() const noexcept { return m_path; }
    [[nodiscard]] AVStream& stream() const noexcept { return *m_stream; }
    [[nodiscard]] AVFormatContext& format() const noexcept { return *m_format; }
    /// One second in ticks of the track's time base, at least 1.
    [[nodiscard]] std::int64_t ticksPerSecond() const;
    /// True where the file has a timeline of its own (edit lists applied), whose zero is time zero.
    [[nodiscard]] bool hasOwnTimeline() const;
    /// The time stamp of the key frame from which the container would begin for `timestamp`, where
    /// it holds an index that reaches there.
    [[nodiscard]] std::optional<std::int64_t> indexedKeyBefore(std::int64_t timestamp) const;

private:
    struct Identity {
        std::int64_t position = -1;
        std::int64_t decodeTime = AV_NOPTS_VALUE;
        int size = 0;
        bool operator==(const Identity&) const = default;
    };

    [[nodiscard]] static Identity identityOf(const AVPacket& packet);
    void open();
    void reopen();
    void forgetReadError();
    void skipToOrdinal(std::int64_t ordinal);
    [[nodiscard]] bool seekToOrdinal(std::int64_t ordinal);
    [[nodiscard]] libav::Packet readFromContainer();

    QString m_path;
    std::unique_ptr<std::stop_token> m_stop; // at a fixed address: libav* holds it
    libav::FormatContext m_format;
    AVStream* m_stream = nullptr;
    bool m_isAtStart = true; ///< freshly opened, nothing read
    std::optional<Identity> m_firstPacket;
    libav::Packet m_pushedBack;
    std::shared_ptr<const PacketTable> m_table;
    std::int64_t m_ordinal = 0;
};

} // namespace stillwick
