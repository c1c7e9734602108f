// Packets read ahead of the decoder, from a key packet on. One thread at a time.
#pragma once

#include "Media/PacketReader.h"

#include <cstddef>
#include <deque>
#include <limits>
#include <set>

namespace stillwick {

/// Chooses the key packet from which a time is decoded, and knows from the packets' times which
/// frame is to come out.
class PacketQueue final {
public:
    static constexpr std::int64_t noLimit = std::numeric_limits<std::int64_t>::max();

    /// Where decoding begins.
    struct Entry {
        bool isStart = true; ///< at the track's first packet
        std::int64_t keyTime = std::numeric_limits<std::int64_t>::min();
        std::int64_t keyDecodeTime = std::numeric_limits<std::int64_t>::min();
    };

    explicit PacketQueue(PacketReader& reader) : m_reader(reader) {}

    /// Empties the queue and begins at the last key packet that is shown at or before `tick` and
    /// decodes before `keysBefore`; at the track's first packet where there is none.
    Entry beginBefore(std::int64_t tick, std::int64_t keysBefore = noLimit);
    Entry beginAtStart();
    /// Drops the packets before the one at `index`, a key packet.
    Entry beginAt(std::size_t index);

    /// Reads until all packets that can be shown at or before `tick` are known.
    void readAheadTo(std::int64_t tick);
    /// True where reading on reaches `tick` sooner than seeking would.
    [[nodiscard]] bool isNear(std::int64_t tick) const;
    /// The index in the queue of the last key packet shown at or before `tick`.
    [[nodiscard]] std::optional<std::size_t> lastKeyBefore(std::int64_t tick) const;

    /// True for a key packet at which time steps back: what is shown from it on hides what came
    /// before.
    [[nodiscard]] bool isSeam(std::size_t index) const;

    /// The next packet for the decoder; null at the end of the file.
    [[nodiscard]] libav::Packet pop();

    /// The time of the `count`th last frame at or before `tick`, 1 being the last, as the packets
    /// say it; none where they do not say.
    [[nodiscard]] std::optional<std::int64_t> frameTimeBefore(std::int64_t tick,
                                                              int count = 1) const;
    /// The time of the first frame after `tick`, as far as packets were read.
    [[nodiscard]] std::optional<std::int64_t> frameTimeAfter(std::int64_t tick) const;
    /// The first seam after `from`, up to `to`.
    [[nodiscard]] std::optional<std::int64_t> seamWithin(std::int64_t from, std::int64_t to) const;
    [[nodiscard]] bool isLastFrame(std::int64_t time) const;
    /// Frees what is known of packets shown before `time`, but for the few before it.
    void forgetBefore(std::int64_t time);

private:
    void clear();
    /// Reads one packet into the queue; false at the end of the file.
    bool readOne();
    void note(const AVPacket& packet);
    [[nodiscard]] bool isKnownUpTo(std::int64_t tick) const;
    [[nodiscard]] std::optional<Entry> scanForKey(std::int64_t tick, std::int64_t keysBefore);

    PacketReader& m_reader;
    std::deque<libav::Packet> m_packets;
    std::size_t m_bytes = 0;
    std::set<std::int64_t> m_times; ///< presentation times of the packets since the entry
    std::int64_t m_lastDecodeTime = std::numeric_limits<std::int64_t>::min();
    std::int64_t m_latest = std::numeric_limits<std::int64_t>::min(); ///< presentation time so far
    std::set<std::int64_t> m_seams; ///< presentation times of the keys at which time steps back
    bool m_isAtEnd = false;
};

} // namespace stillwick
