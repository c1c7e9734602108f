#include "Media/PacketReader.h"

#include "Media/FileOpening.h"
#include "Media/MediaError.h"
#include "Media/PacketTable.h"

#include <algorithm>
#include <utility>

namespace stillwick {

PacketReader::PacketReader(QString path, std::stop_token stop)
    : m_path(std::move(path)), m_stop(std::make_unique<std::stop_token>(std::move(stop))) {
    open();
}

PacketReader::~PacketReader() = default;
PacketReader::PacketReader(PacketReader&&) noexcept = default;
PacketReader& PacketReader::operator=(PacketReader&&) noexcept = default;

void PacketReader::open() {
    m_isAtStart = true;
    m_format = openContainer(m_path, *m_stop);
    m_stream = &chooseVideoTrack(*m_format);
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        if (m_format->streams[i] != m_stream)
            m_format->streams[i]->discard = AVDISCARD_ALL;
    }
}

void PacketReader::reopen() {
    m_pushedBack.reset();
    open();
}

void PacketReader::setStopToken(std::stop_token stop) const {
    *m_stop = std::move(stop);
}

void PacketReader::throwIfStopped() const {
    if (m_stop->stop_requested())
        throw MediaError::make(MediaError::Category::Cancelled);
}

std::int64_t PacketReader::ticksPerSecond() const {
    return std::max<std::int64_t>(1, av_rescale_q(1, {1, 1}, m_stream->time_base));
}

bool PacketReader::hasOwnTimeline() const {
    return QByteArrayView(m_format->iformat->name).startsWith("mov,");
}

PacketReader::Identity PacketReader::identityOf(const AVPacket& packet) {
    return {packet.pos, packet.dts, packet.size};
}

bool PacketReader::isFirst(const AVPacket& packet) const {
    if (m_table)
        return packet.pos >= 0 && packet.pos == m_table->entries().front().position;
    return m_firstPacket && identityOf(packet) == *m_firstPacket;
}

std::optional<std::int64_t> PacketReader::firstDecodeTime() const {
    if (m_table)
        return m_table->entries().front().decodeTime;
    if (m_firstPacket && m_firstPacket->decodeTime != AV_NOPTS_VALUE)
        return m_firstPacket->decodeTime;
    const AVIndexEntry* entry = hasOwnTimeline() ? avformat_index_get_entry(m_stream, 0) : nullptr;
    return entry ? std::optional(entry->timestamp) : std::nullopt;
}

std::optional<std::int64_t> PacketReader::indexedKeyBefore(std::int64_t timestamp) const {
    if (m_table) {
        const auto ordinal = m_table->keyBefore(timestamp);
        return ordinal ? std::optional(m_table->entries()[std::size_t(*ordinal)].decodeTime)
                       : std::nullopt;
    }
    const AVIndexEntry* entry =
        avformat_index_get_entry_from_timestamp(m_stream, timestamp, AVSEEK_FLAG_BACKWARD);
    return entry ? std::optional(entry->timestamp) : std::nullopt;
}

libav::Packet PacketReader::readFromContainer() {
    libav::Packet packet = libav::makePacket();
    for (;;) {
        throwIfStopped();
        const int code = av_read_frame(m_format.get(), packet.get());
        if (code == AVERROR_EXIT)
            throw MediaError::fromLibav(code);
        if (code < 0) {
            if (const int error = libav::readError(*m_format); error != 0)
                throw MediaError::fromLibav(error);
            // A container cut off or damaged from here on is met like one that ends here: what
            // came before stays usable.
            return nullptr;
        }
        if (packet->stream_index == m_stream->index)
            break;
        av_packet_unref(packet.get());
    }
    if (m_isAtStart)
        m_firstPacket = identityOf(*packet);
    m_isAtStart = false;
    return packet;
}

libav::Packet PacketReader::read() {
    libav::Packet packet = m_pushedBack ? std::move(m_pushedBack) : readFromContainer();
    if (!packet || !m_table)
        return packet;
    const auto& entries = m_table->entries();
    if (std::size_t(m_ordinal) >= entries.size())
        return nullptr; // the file has grown since the table was made
    const PacketTable::Entry& entry = entries[std::size_t(m_ordinal++)];
    if (entry.isKey)
        packet->flags |= AV_PKT_FLAG_KEY;
    packet->pts = entry.hasPicture ? entry.presentationTime : AV_NOPTS_VALUE;
    packet->dts = entry.decodeTime;
    return packet;
}

/// A read that was withdrawn would make all later ones fail.
void PacketReader::forgetReadError() {
    if (AVIOContext* file = m_format->pb; file && file->error != 0) {
        file->error = 0;
        file->eof_reached = 0;
    }
}

bool PacketReader::seekBefore(std::int64_t timestamp) {
    forgetReadError();
    m_pushedBack.reset();
    m_isAtStart = false;
    if (m_table) {
        const auto ordinal = m_table->keyBefore(timestamp);
        if (!ordinal)
            return false;
        if (!seekToOrdinal(*ordinal))
            skipToOrdinal(*ordinal);
        return true;
    }
    if (av_seek_frame(m_format.get(), m_stream->index, timestamp, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    m_pushedBack = readFromContainer();
    // Packets at the very start that have no time of their own are given one by libav* after a
    // seek, counted from the place asked for. Only a file opened anew reads as it did the first
    // time.
    if (m_pushedBack && m_firstPacket && m_pushedBack->pos == m_firstPacket->position &&
        identityOf(*m_pushedBack) != *m_firstPacket)
        reopen();
    return true;
}

void PacketReader::rewind() {
    forgetReadError();
    m_ordinal = 0;
    if (m_isAtStart)
        return;
    m_pushedBack.reset();
    const Identity first = m_firstPacket.value_or(Identity{});
    if (first.decodeTime != AV_NOPTS_VALUE &&
        av_seek_frame(m_format.get(), m_stream->index, first.decodeTime, AVSEEK_FLAG_BACKWARD) >=
            0) {
        libav::Packet packet = readFromContainer();
        if (packet && identityOf(*packet) == first) {
            m_pushedBack = std::move(packet);
            return;
        }
    }
    reopen();
}

void PacketReader::setTable(std::shared_ptr<const PacketTable> table) {
    m_table = std::move(table);
    rewind();
}

void PacketReader::skipToOrdinal(std::int64_t ordinal) {
    rewind();
    while (m_ordinal < ordinal && read()) {
    }
}

bool PacketReader::seekToOrdinal(std::int64_t ordinal) {
    const PacketTable::Entry& entry = m_table->entries()[std::size_t(ordinal)];
    if (entry.position < 0)
        return false;
    const bool byBytes = (m_format->iformat->flags & AVFMT_NO_BYTE_SEEK) == 0;
    const int code =
        byBytes ? av_seek_frame(m_format.get(), m_stream->index, entry.position, AVSEEK_FLAG_BYTE)
                : av_seek_frame(m_format.get(), m_stream->index, entry.containerDecodeTime,
                                AVSEEK_FLAG_BACKWARD);
    if (code < 0)
        return false;
    // The tail of a packet that began before the place may come first, and pass for one that begins
    // there.
    constexpr int strangers = 3;
    for (int i = 0; i <= strangers; ++i) {
        libav::Packet packet = readFromContainer();
        if (!packet)
            return false;
        if (packet->pos == entry.position && packet->size == entry.size) {
            m_pushedBack = std::move(packet);
            m_ordinal = ordinal;
            return true;
        }
    }
    return false;
}

} // namespace stillwick
