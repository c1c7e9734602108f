#include "Media/PacketTable.h"

#include "Media/MediaError.h"
#include "Media/PacketReader.h"
#include "Media/VideoDecoder.h"

#include <QByteArrayView>

#include <algorithm>
#include <limits>

namespace stillwick {

namespace {

using Entry = PacketTable::Entry;

constexpr int packetsInHead = 64;
// Up to this size every packet is looked at; larger files are sampled at so many places.
constexpr std::int64_t smallFile = std::int64_t(16) << 20;
constexpr int samples = 48;
// A jump counts when so many packets stay behind it: one damaged time stamp is no jump.
constexpr std::size_t packetsToBelieve = 8;

Entry entryOf(const AVPacket& packet) {
    Entry entry;
    entry.position = packet.pos;
    entry.size = packet.size;
    entry.containerDecodeTime = packet.dts;
    entry.presentationTime = packet.pts;
    entry.decodeTime = packet.dts;
    entry.isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    entry.hasPicture = packet.pts != AV_NOPTS_VALUE;
    return entry;
}

std::vector<Entry> readEntries(PacketReader& reader, std::size_t limit) {
    std::vector<Entry> entries;
    while (entries.size() < limit) {
        const libav::Packet packet = reader.read();
        if (!packet)
            break;
        entries.push_back(entryOf(*packet));
    }
    return entries;
}

/// True where packets lack times. Those before the first that has one are not counted: they are
/// what is left of pictures that were cut away.
bool lacksTimes(const std::vector<Entry>& entries) {
    const auto hasTime = [](const Entry& entry) {
        return entry.presentationTime != AV_NOPTS_VALUE;
    };
    const auto first = std::find_if(entries.begin(), entries.end(), hasTime);
    return first == entries.end() ? !entries.empty() : !std::all_of(first, entries.end(), hasTime);
}

/// True where packets of the head hold several pictures under one time stamp: libav* counts on from
/// it, but not to the same times after a seek.
bool sharesTimes(PacketReader& reader) {
    const std::vector<Entry> entries = readEntries(reader, packetsInHead);
    reader.rewind();
    return std::any_of(entries.begin(), entries.end(),
                       [](const Entry& entry) { return entry.position < 0; });
}

/// Joins what follows a jump back in time to the end of what came before it. Returns whether there
/// was a jump.
bool joinSegments(std::vector<Entry>& entries, std::int64_t second) {
    bool hasJumped = false;
    std::int64_t offset = 0;
    std::int64_t spacing = 0;
    std::int64_t last = AV_NOPTS_VALUE;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        Entry& entry = entries[i];
        if (entry.decodeTime == AV_NOPTS_VALUE)
            continue;
        const std::int64_t container = entry.decodeTime;
        const Entry& later = entries[std::min(i + packetsToBelieve, entries.size() - 1)];
        const bool staysBehind = last != AV_NOPTS_VALUE && container + offset < last - second &&
                                 later.decodeTime != AV_NOPTS_VALUE &&
                                 later.containerDecodeTime + offset < last - second / 2;
        if (staysBehind) {
            offset = last + spacing - container;
            hasJumped = true;
        }
        if (last != AV_NOPTS_VALUE && container + offset > last)
            spacing = container + offset - last;
        entry.decodeTime = container + offset;
        if (entry.presentationTime != AV_NOPTS_VALUE)
            entry.presentationTime += offset;
        last = std::max(last, entry.decodeTime);
    }
    return hasJumped;
}

/// Decode times at places spread over the file, and whether one of them lies before an earlier one.
bool sampledTimesJumpBack(PacketReader& reader, std::int64_t fileSize) {
    std::optional<std::int64_t> last;
    for (int i = 0; i < samples; ++i) {
        AVFormatContext& format = reader.format();
        if (av_seek_frame(&format, reader.stream().index, fileSize / samples * i,
                          AVSEEK_FLAG_BYTE) < 0)
            continue;
        const std::vector<Entry> entries = readEntries(reader, 1);
        if (entries.empty() || entries.front().decodeTime == AV_NOPTS_VALUE)
            continue;
        const std::int64_t time = entries.front().decodeTime;
        if (last && time < *last - reader.ticksPerSecond())
            return true;
        last = std::max(time, last.value_or(time));
    }
    return false;
}

bool jumpsBack(PacketReader& reader) {
    const std::int64_t size = avio_size(reader.format().pb);
    if (size > smallFile)
        return sampledTimesJumpBack(reader, size);
    std::vector<Entry> entries = readEntries(reader, std::numeric_limits<std::size_t>::max());
    return joinSegments(entries, reader.ticksPerSecond());
}

/// The packets that gave pictures, in the order in which these are shown.
std::vector<std::size_t> decodeAll(PacketReader& reader) {
    VideoDecoder decoder(reader.stream());
    std::vector<std::size_t> shown;
    for (bool isAtEnd = false; !isAtEnd;) {
        const libav::Packet packet = reader.read();
        isAtEnd = !packet;
        decoder.send(packet.get(), VideoDecoder::Effort::EveryPicture);
        while (const SharedFrame frame = decoder.receive())
            shown.push_back(std::size_t(frame->packetNumber()));
    }
    return shown;
}

std::int64_t frameTicks(const AVStream& stream) {
    AVRational rate = stream.r_frame_rate.num > 0 ? stream.r_frame_rate : stream.avg_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        rate = {25, 1}; // what players take where a stream says nothing
    return std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(rate), stream.time_base));
}

/// Gives the pictures their packets' decode times in order, or an even grid where there are none.
/// Returns the spacing of the last two.
std::int64_t assignTimes(std::vector<Entry>& entries, const std::vector<std::size_t>& shown,
                         const AVStream& stream) {
    std::vector<std::int64_t> times;
    for (Entry& entry : entries)
        entry.hasPicture = false;
    for (const std::size_t packet : shown) {
        entries[packet].hasPicture = true;
        times.push_back(entries[packet].containerDecodeTime);
    }
    std::sort(times.begin(), times.end());
    const bool areTold = !times.empty() && times.front() != AV_NOPTS_VALUE &&
                         std::adjacent_find(times.begin(), times.end()) == times.end();
    for (std::size_t i = 0; i < shown.size(); ++i) {
        entries[shown[i]].presentationTime =
            areTold ? times[i] : std::int64_t(i) * frameTicks(stream);
    }
    return areTold && times.size() > 1 ? times.back() - times[times.size() - 2]
                                       : frameTicks(stream);
}

/// Decode times that follow from the presentation times: the earliest still to come.
void deriveDecodeTimes(std::vector<Entry>& entries) {
    std::int64_t earliest = std::numeric_limits<std::int64_t>::max();
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        if (entry->hasPicture)
            earliest = std::min(earliest, entry->presentationTime);
        entry->decodeTime = earliest;
    }
}

} // namespace

bool PacketTable::isNeededFor(PacketReader& reader) {
    const AVInputFormat& container = *reader.format().iformat;
    const QByteArrayView name(container.name);
    bool isNeeded = false;
    if (name == QByteArrayView("avi"))
        isNeeded = lacksTimes(readEntries(reader, packetsInHead));
    else if (name == QByteArrayView("mpeg"))
        isNeeded = true; // one time stamp may stand for several pictures
    else if (name == QByteArrayView("mpegts"))
        isNeeded = sharesTimes(reader) || jumpsBack(reader);
    reader.rewind();
    return isNeeded;
}

std::shared_ptr<const PacketTable> PacketTable::make(const QString& path,
                                                     const std::stop_token& stop) {
    PacketReader reader(path, stop);
    auto table = std::make_shared<PacketTable>();
    std::vector<Entry>& entries = table->m_entries;
    entries = readEntries(reader, std::numeric_limits<std::size_t>::max());
    if (entries.empty())
        throw MediaError::make(MediaError::Category::NoPicture);
    if (lacksTimes(entries)) {
        reader.rewind();
        table->m_lastDuration = assignTimes(entries, decodeAll(reader), reader.stream());
        deriveDecodeTimes(entries);
    } else {
        joinSegments(entries, reader.ticksPerSecond());
    }
    return table;
}

std::optional<std::int64_t> PacketTable::keyBefore(std::int64_t timestamp) const {
    for (std::size_t i = m_entries.size(); i-- > 0;) {
        const Entry& entry = m_entries[i];
        if (entry.isKey && entry.hasPicture && entry.presentationTime <= timestamp)
            return std::int64_t(i);
    }
    return std::nullopt;
}

} // namespace stillwick
