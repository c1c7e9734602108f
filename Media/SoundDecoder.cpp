#include "Media/SoundDecoder.h"

#include "Media/FileOpening.h"
#include "Media/MediaError.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace stillwick {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr AVRational nanosecond{1, 1'000'000'000};

// Decoders of lossy formats go on from what came before: one frame of overlap, nine of bit
// reservoir in MP3, 80 ms in Opus. This is twice the longest of them.
constexpr nanoseconds settlingTime = 500ms;

/// The stream whose index finds places in the file: Matroska has one for pictures alone, and reads
/// a file to its end where it is asked for another.
int seekStreamFor(const AVFormatContext& format, int sound, int picture) {
    const bool isMatroska = QByteArrayView(format.iformat->name).startsWith("matroska");
    if (!isMatroska || picture < 0)
        return sound;
    const int disposition = format.streams[picture]->disposition;
    return (disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 ? sound : picture;
}

} // namespace

std::unique_ptr<SoundDecoder> SoundDecoder::open(const QString& path, std::stop_token stop) {
    std::unique_ptr<SoundDecoder> decoder(new SoundDecoder(path, std::move(stop)));
    return decoder->openTrack() ? std::move(decoder) : nullptr;
}

SoundDecoder::SoundDecoder(QString path, std::stop_token stop)
    : m_path(std::move(path)), m_stop(std::make_unique<std::stop_token>(std::move(stop))) {}

bool SoundDecoder::openTrack() {
    m_pushedBack.reset();
    m_codec.reset();
    m_format = openContainer(m_path, *m_stop);
    const int picture = av_find_best_stream(m_format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    const AVCodec* codec = nullptr;
    const int best =
        av_find_best_stream(m_format.get(), AVMEDIA_TYPE_AUDIO, -1, picture, &codec, 0);
    if (best < 0 || !codec)
        return false;
    m_stream = m_format->streams[best];
    m_seekStream = m_format->streams[seekStreamFor(*m_format, best, picture)];
    for (unsigned i = 0; i < m_format->nb_streams; ++i)
        m_format->streams[i]->discard = int(i) == best ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    if (!openCodec(*codec))
        return false;
    m_useFrom.reset();
    m_isDrained = false;
    m_pushedBack = readFromContainer();
    m_firstPacket = m_pushedBack ? identityOf(*m_pushedBack) : Identity{};
    return m_pushedBack != nullptr;
}

bool SoundDecoder::openCodec(const AVCodec& codec) {
    libav::CodecContext context =
        libav::checked(libav::CodecContext(avcodec_alloc_context3(&codec)));
    if (avcodec_parameters_to_context(context.get(), m_stream->codecpar) < 0)
        return false;
    context->pkt_timebase = m_stream->time_base; // by which skipped samples are told
    context->thread_count = 1;
    if (avcodec_open2(context.get(), &codec, nullptr) < 0)
        return false;
    m_codec = std::move(context);
    return true;
}

SoundDecoder::Identity SoundDecoder::identityOf(const AVPacket& packet) {
    std::size_t skipped = 0;
    (void)av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &skipped);
    return {packet.pts, packet.pos, packet.size, skipped};
}

std::int64_t SoundDecoder::inStreamUnits(nanoseconds time) const {
    return av_rescale_q(time.count(), nanosecond, m_stream->time_base);
}

bool SoundDecoder::isBeforeUse(const AVPacket& packet) const {
    return m_useFrom && packet.pts != AV_NOPTS_VALUE && packet.duration > 0 &&
           packet.pts + packet.duration <= *m_useFrom;
}

libav::Packet SoundDecoder::readFromContainer() {
    libav::Packet packet = libav::makePacket();
    // Errors are met like the end: what came before stays usable, and sound that is missing is
    // silence.
    while (av_read_frame(m_format.get(), packet.get()) >= 0) {
        if (packet->stream_index == m_stream->index)
            return packet;
        av_packet_unref(packet.get());
    }
    return nullptr;
}

libav::Packet SoundDecoder::readPacket() {
    if (m_pushedBack)
        return std::exchange(m_pushedBack, nullptr);
    return readFromContainer();
}

void SoundDecoder::sendPacket() {
    libav::Packet packet = readPacket();
    while (packet && isBeforeUse(*packet))
        packet = readPacket();
    if (packet)
        m_useFrom.reset();
    else
        m_isDrained = true;
    avcodec_send_packet(m_codec.get(), packet.get()); // a damaged one gives no frame
}

libav::Frame SoundDecoder::receive() {
    libav::Frame frame = libav::makeFrame();
    constexpr int mostErrors = 64; // of one packet
    for (int errors = 0; errors < mostErrors; ++errors) {
        const int code = avcodec_receive_frame(m_codec.get(), frame.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return nullptr;
        if (code >= 0 && frame->nb_samples > 0 && frame->sample_rate > 0)
            return frame;
        av_frame_unref(frame.get());
    }
    return nullptr;
}

libav::Frame SoundDecoder::next() {
    while (m_codec) {
        if (libav::Frame frame = receive())
            return frame;
        if (m_isDrained)
            break;
        sendPacket();
    }
    return nullptr;
}

void SoundDecoder::seekBefore(nanoseconds time) {
    const nanoseconds settled = time - settlingTime;
    if (m_codec)
        avcodec_flush_buffers(m_codec.get());
    m_isDrained = false;
    m_pushedBack.reset();
    m_useFrom = inStreamUnits(settled);
    const bool isAtHead =
        !m_codec || (m_firstPacket.time != AV_NOPTS_VALUE && m_firstPacket.time >= *m_useFrom);
    if (!isAtHead) {
        // A container that has no index may land too late.
        constexpr std::array earlier{nanoseconds(0s), nanoseconds(1s), nanoseconds(10s)};
        const bool landed = std::any_of(earlier.begin(), earlier.end(), [&](nanoseconds by) {
            return landsBefore(settled, settled - by);
        });
        if (landed)
            return;
    }
    rewind();
}

bool SoundDecoder::landsBefore(nanoseconds time, nanoseconds place) {
    const std::int64_t target = av_rescale_q(place.count(), nanosecond, m_seekStream->time_base);
    if (av_seek_frame(m_format.get(), m_seekStream->index, target, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    m_pushedBack = readFromContainer();
    if (!m_pushedBack || m_pushedBack->pts == AV_NOPTS_VALUE)
        return false;
    return m_pushedBack->pts <= inStreamUnits(time);
}

void SoundDecoder::rewind() {
    const std::int64_t first = m_firstPacket.time;
    if (m_codec && first != AV_NOPTS_VALUE &&
        av_seek_frame(m_format.get(), m_stream->index, first, AVSEEK_FLAG_BACKWARD) >= 0) {
        m_pushedBack = readFromContainer();
        // Only a decoder opened anew leaves out again what the encoder put before the first sample.
        if (m_pushedBack && identityOf(*m_pushedBack) == m_firstPacket &&
            openCodec(*m_codec->codec))
            return;
    }
    // Some containers tell only a file opened anew how many samples are to be skipped.
    const std::optional<std::int64_t> useFrom = m_useFrom;
    try {
        (void)openTrack();
    } catch (const MediaError&) {
        // The file is gone, or the request withdrawn: nothing more is read.
    }
    m_useFrom = useFrom;
}

} // namespace stillwick
