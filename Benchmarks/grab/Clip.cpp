#include "Clip.h"

#include <QFile>
#include <QString>

extern "C" {
#include <libavutil/murmur3.h>
}

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace stillwick::benchmarks {

PictureHash hashOf(const PlanesView& planes) {
    struct Free {
        void operator()(AVMurMur3* state) const noexcept { av_free(state); }
    };
    const auto state = libav::checked(std::unique_ptr<AVMurMur3, Free>(av_murmur3_alloc()));
    av_murmur3_init(state.get());
    for (int plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 0 : 1;
        const int width = (planes.width + shift) >> shift;
        const int height = (planes.height + shift) >> shift;
        for (int y = 0; y < height; ++y) {
            const std::uint8_t* row = planes.data[plane] + std::ptrdiff_t(planes.stride[plane]) * y;
            av_murmur3_update(state.get(), row, std::size_t(width));
        }
    }
    PictureHash hash{};
    av_murmur3_final(state.get(), hash.data());
    return hash;
}

PictureHash hashOf(const AVFrame& frame) {
    if (frame.format != AV_PIX_FMT_YUV420P)
        throw std::runtime_error("a picture of an unexpected pixel format");
    return hashOf({frame.data, frame.linesize, frame.width, frame.height});
}

libav::CodecContext openDecoder(const AVStream& stream, int threads) {
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    libav::CodecContext context =
        libav::checked(libav::CodecContext(avcodec_alloc_context3(codec)));
    if (avcodec_parameters_to_context(context.get(), stream.codecpar) < 0)
        throw std::runtime_error("no decoder for the clip");
    context->pkt_timebase = stream.time_base;
    context->thread_count = threads;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        throw std::runtime_error("the decoder for the clip does not open");
    return context;
}

Clip::Clip(const QString& path, Hashes hashes) {
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, QFile::encodeName(path).constData(), nullptr, nullptr) < 0)
        throw std::runtime_error("the clip " + path.toStdString() + " does not open");
    m_format.reset(format);
    if (avformat_find_stream_info(format, nullptr) < 0)
        throw std::runtime_error("the clip holds no streams");
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0)
        throw std::runtime_error("the clip holds no video");
    m_stream = format->streams[index];
    readPackets();
    hashes == Hashes::Made ? decodePictures() : listPictures();
}

void Clip::readPackets() {
    for (;;) {
        libav::Packet packet = libav::makePacket();
        if (av_read_frame(m_format.get(), packet.get()) < 0)
            return;
        if (packet->stream_index == m_stream->index)
            m_packets.push_back(std::move(packet));
    }
}

void Clip::decodePictures() {
    const libav::CodecContext decoder = openDecoder(*m_stream, 1);
    const libav::Frame frame = libav::makeFrame();
    for (std::size_t i = 0; i <= m_packets.size(); ++i) {
        avcodec_send_packet(decoder.get(), i < m_packets.size() ? m_packets[i].get() : nullptr);
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0)
            m_pictures.push_back({frame->pts, hashOf(*frame)});
    }
    if (m_pictures.size() != m_packets.size())
        throw std::runtime_error("the clip is damaged");
}

void Clip::listPictures() {
    for (const libav::Packet& packet : m_packets)
        m_pictures.push_back({packet->pts, {}});
    std::sort(m_pictures.begin(), m_pictures.end(),
              [](const Picture& a, const Picture& b) { return a.time < b.time; });
}

Moment Clip::momentIn(std::size_t frame, double fraction) const {
    const std::int64_t start = m_pictures[frame].time;
    const bool isLast = frame + 1 == m_pictures.size();
    const std::int64_t length = isLast ? 1 : m_pictures[frame + 1].time - start;
    const AVRational timeBase = m_stream->time_base;
    const std::int64_t tick = start + std::int64_t(fraction * double(length));
    return {CMTime::make(tick * timeBase.num, timeBase.den), frame};
}

} // namespace stillwick::benchmarks
