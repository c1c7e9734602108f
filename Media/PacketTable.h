// Timestamps for tracks whose container gives none or breaks them. Immutable once made, any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

class QString;

namespace stillwick {

class PacketReader;

/// Every packet of a track in decode order, with a presentation time for each that has a picture.
class PacketTable final {
public:
    struct Entry {
        std::int64_t position = -1;           ///< bytes from the start of the file; -1 unknown
        int size = 0;                         ///< bytes of the packet
        std::int64_t containerDecodeTime = 0; ///< as the container says, for finding it again
        std::int64_t presentationTime = 0;
        std::int64_t decodeTime = 0; ///< never after the presentation time of a packet to come
        bool isKey = false;
        bool hasPicture = true;
    };

    /// Whether the track's packets, as the container gives them, lack times or jump back in time;
    /// found by reading its head and, where times could restart, samples all along the file. The
    /// track is rewound. *Errors*: MediaError.
    [[nodiscard]] static bool isNeededFor(PacketReader& reader);

    /// Reads the whole track once: packets only where they have times, which are then joined end to
    /// end where they jump back; decoded where they have none, the pictures then taking the decode
    /// times in order, or an even grid where there are no decode times either.
    /// *Errors*: MediaError.
    [[nodiscard]] static std::shared_ptr<const PacketTable> make(const QString& path,
                                                                 const std::stop_token& stop);

    [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return m_entries; }
    /// The ordinal of the last key packet shown at or before `timestamp`; none before the first.
    [[nodiscard]] std::optional<std::int64_t> keyBefore(std::int64_t timestamp) const;
    /// How long the last picture is shown, where the container does not tell times; else 0.
    [[nodiscard]] std::int64_t lastDuration() const noexcept { return m_lastDuration; }

private:
    std::vector<Entry> m_entries;
    std::int64_t m_lastDuration = 0;
};

} // namespace stillwick
