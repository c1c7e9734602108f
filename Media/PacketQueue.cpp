#include "Media/PacketQueue.h"

#include <algorithm>
#include <iterator>

namespace stillwick {

namespace {

// A group of pictures larger than this is decoded as it is read.
constexpr std::size_t maximumBytes = std::size_t(256) << 20U;
// Reading this far costs about as much as seeking.
constexpr std::int64_t nearSeconds = 10;
constexpr int maximumSeeks = 20;

bool isKey(const AVPacket& packet) {
    return (packet.flags & AV_PKT_FLAG_KEY) != 0 && packet.pts != AV_NOPTS_VALUE;
}

std::int64_t decodeTimeOf(const AVPacket& packet) {
    return packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
}

} // namespace

void PacketQueue::clear() {
    m_packets.clear();
    m_bytes = 0;
    m_times.clear();
    m_lastDecodeTime = std::numeric_limits<std::int64_t>::min();
    m_latest = std::numeric_limits<std::int64_t>::min();
    m_seams.clear();
    m_isAtEnd = false;
}

bool PacketQueue::readOne() {
    libav::Packet packet = m_reader.read();
    if (!packet) {
        m_isAtEnd = true;
        return false;
    }
    if (packet->dts != AV_NOPTS_VALUE)
        m_lastDecodeTime = packet->dts;
    if (isKey(*packet) && packet->pts <= m_latest)
        m_seams.insert(packet->pts);
    m_latest = std::max(m_latest, packet->pts); // "no time" is the least of all
    note(*packet);
    m_packets.push_back(std::move(packet));
    return true;
}

void PacketQueue::note(const AVPacket& packet) {
    m_bytes += std::size_t(packet.size);
    if (packet.pts != AV_NOPTS_VALUE && (packet.flags & AV_PKT_FLAG_DISCARD) == 0)
        m_times.insert(packet.pts);
}

bool PacketQueue::isSeam(std::size_t index) const {
    return m_seams.count(m_packets[index]->pts) != 0;
}

bool PacketQueue::isKnownUpTo(std::int64_t tick) const {
    return m_isAtEnd || m_lastDecodeTime > tick;
}

void PacketQueue::readAheadTo(std::int64_t tick) {
    while (!isKnownUpTo(tick) && m_bytes < maximumBytes && readOne()) {
    }
}

PacketQueue::Entry PacketQueue::beginAtStart() {
    clear();
    m_reader.rewind();
    return {};
}

PacketQueue::Entry PacketQueue::beginAt(std::size_t index) {
    m_packets.erase(m_packets.begin(), m_packets.begin() + std::ptrdiff_t(index));
    m_bytes = 0;
    m_times.clear();
    for (const libav::Packet& packet : m_packets)
        note(*packet);
    const AVPacket& key = *m_packets.front();
    return {m_reader.isFirst(key), key.pts, decodeTimeOf(key)};
}

std::optional<PacketQueue::Entry> PacketQueue::scanForKey(std::int64_t tick,
                                                          std::int64_t keysBefore) {
    bool hasKey = false;
    while (!isKnownUpTo(tick) && (!hasKey || m_bytes < maximumBytes) && readOne()) {
        const AVPacket& packet = *m_packets.back();
        if (isKey(packet) && packet.pts <= tick && decodeTimeOf(packet) < keysBefore) {
            beginAt(m_packets.size() - 1);
            hasKey = true;
        } else if (!hasKey) {
            m_packets.clear();
            m_bytes = 0;
        }
    }
    if (!hasKey)
        return std::nullopt;
    return beginAt(0);
}

PacketQueue::Entry PacketQueue::beginBefore(std::int64_t tick, std::int64_t keysBefore) {
    std::int64_t from = keysBefore == noLimit ? tick : std::min(tick, keysBefore - 1);
    std::int64_t step = m_reader.ticksPerSecond();
    for (int attempt = 0; attempt < maximumSeeks; ++attempt) {
        clear();
        if (!m_reader.seekBefore(from))
            break;
        if (const auto entry = scanForKey(tick, keysBefore))
            return *entry;
        if (const auto first = m_reader.firstDecodeTime(); first && from < *first)
            break;
        from -= step;
        step *= 2;
    }
    return beginAtStart();
}

bool PacketQueue::isNear(std::int64_t tick) const {
    if (isKnownUpTo(tick))
        return true;
    if (tick - m_lastDecodeTime > nearSeconds * m_reader.ticksPerSecond())
        return false;
    const auto key = m_reader.indexedKeyBefore(tick);
    return !key || *key <= m_lastDecodeTime;
}

std::optional<std::size_t> PacketQueue::lastKeyBefore(std::int64_t tick) const {
    for (std::size_t i = m_packets.size(); i-- > 0;) {
        if (isKey(*m_packets[i]) && m_packets[i]->pts <= tick)
            return i;
    }
    return std::nullopt;
}

libav::Packet PacketQueue::pop() {
    if (m_packets.empty() && !(!m_isAtEnd && readOne()))
        return nullptr;
    libav::Packet packet = std::move(m_packets.front());
    m_packets.pop_front();
    m_bytes -= std::size_t(packet->size);
    return packet;
}

std::optional<std::int64_t> PacketQueue::frameTimeBefore(std::int64_t tick, int count) const {
    if (!isKnownUpTo(tick))
        return std::nullopt;
    auto after = m_times.upper_bound(tick);
    for (; count > 0; --count) {
        if (after == m_times.begin())
            return std::nullopt;
        --after;
    }
    return *after;
}

std::optional<std::int64_t> PacketQueue::frameTimeAfter(std::int64_t tick) const {
    const auto after = m_times.upper_bound(tick);
    return after == m_times.end() ? std::nullopt : std::optional(*after);
}

std::optional<std::int64_t> PacketQueue::seamWithin(std::int64_t from, std::int64_t to) const {
    const auto seam = m_seams.upper_bound(from);
    return seam == m_seams.end() || *seam > to ? std::nullopt : std::optional(*seam);
}

bool PacketQueue::isLastFrame(std::int64_t time) const {
    return m_isAtEnd && m_times.upper_bound(time) == m_times.end();
}

void PacketQueue::forgetBefore(std::int64_t time) {
    constexpr int kept = 4;
    auto end = m_times.lower_bound(time);
    for (int i = 0; i < kept && end != m_times.begin(); ++i)
        --end;
    m_times.erase(m_times.begin(), end);
}

} // namespace stillwick
