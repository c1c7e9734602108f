#include "Media/VideoDecoder.h"

#include "Media/FileOpening.h"
#include "Media/MediaError.h"
#include "Media/TrackDescription.h"

#include <algorithm>
#include <thread>

namespace stillwick {

int decoderThreadCount() {
    return std::clamp(int(std::thread::hardware_concurrency()) + 2, 2, 6);
}

VideoDecoder::VideoDecoder(const AVStream& stream) : m_track(describeTrack(stream)) {
    const AVCodec* codec = decoderFor(stream);
    if (!codec)
        throw MediaError::make(MediaError::Category::Unsupported);
    m_context = libav::checked(libav::CodecContext(avcodec_alloc_context3(codec)));
    if (const int code = avcodec_parameters_to_context(m_context.get(), stream.codecpar); code < 0)
        throw MediaError::fromLibav(code);
    m_context->max_pixels = maximumPixels; // a size may grow in mid-stream
    m_context->pkt_timebase = stream.time_base;
    m_context->thread_count = decoderThreadCount();
    m_context->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    m_context->flags |= AV_CODEC_FLAG_UNALIGNED; // crop to the pixel, also on the left
    if (const int code = avcodec_open2(m_context.get(), codec, nullptr); code < 0)
        throw MediaError::make(MediaError::Category::Unsupported,
                               MediaError::fromLibav(code).libraryText());
}

void VideoDecoder::send(const AVPacket* packet, Effort effort) {
    m_context->skip_frame = effort == Effort::ReferencesOnly ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    m_context->reordered_opaque = m_packetsSent++;
    const int code = avcodec_send_packet(m_context.get(), packet);
    if (libav::isOutOfMemory(code))
        throw MediaError::fromLibav(code);
}

SharedFrame VideoDecoder::receive() {
    libav::Frame frame = libav::makeFrame();
    for (;;) {
        const int code = avcodec_receive_frame(m_context.get(), frame.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return nullptr;
        if (libav::isOutOfMemory(code))
            throw MediaError::fromLibav(code);
        if (code >= 0) // an error is one packet that gave no frame: the next may
            return std::make_shared<const VideoFrame>(std::move(frame), m_track);
    }
}

void VideoDecoder::flush() {
    avcodec_flush_buffers(m_context.get());
    m_packetsSent = 0;
}

} // namespace stillwick
