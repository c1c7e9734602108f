// FFmpeg's C interface behind owning handles: the one place that includes its headers.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <cerrno>
#include <cstddef>
#include <memory>
#include <new>

namespace stillwick::libav {

struct Deleter {
    void operator()(AVFormatContext* context) const noexcept {
        AVIOContext* file = (context->flags & AVFMT_FLAG_CUSTOM_IO) != 0 ? context->pb : nullptr;
        avformat_close_input(&context); // leaves the file open
        avio_closep(&file);
    }
    void operator()(AVIOContext* file) const noexcept { avio_closep(&file); }
    void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
    void operator()(AVDictionary* dictionary) const noexcept { av_dict_free(&dictionary); }
    void operator()(SwsContext* context) const noexcept { sws_freeContext(context); }
    void operator()(SwrContext* context) const noexcept { swr_free(&context); }
};

using File = std::unique_ptr<AVIOContext, Deleter>;
using FormatContext = std::unique_ptr<AVFormatContext, Deleter>;
using CodecContext = std::unique_ptr<AVCodecContext, Deleter>;
using Packet = std::unique_ptr<AVPacket, Deleter>;
using Frame = std::unique_ptr<AVFrame, Deleter>;
using Scaler = std::unique_ptr<SwsContext, Deleter>;
using Resampler = std::unique_ptr<SwrContext, Deleter>;

template <typename Handle>
[[nodiscard]] Handle checked(Handle handle) {
    if (!handle)
        throw std::bad_alloc();
    return handle;
}

[[nodiscard]] inline Packet makePacket() {
    return checked(Packet(av_packet_alloc()));
}
[[nodiscard]] inline Frame makeFrame() {
    return checked(Frame(av_frame_alloc()));
}

/// Why the system did not let a film be read on; 0 where it did. Demuxers make the same codes up,
/// EIO where a film is shorter than it claims.
[[nodiscard]] inline int readError(const AVFormatContext& format) {
    return format.pb ? format.pb->error : 0;
}

/// True where a call failed for want of memory. libav* says the same of an allocation beyond its
/// own bound, for which it does not ask the system: there the film claims too much.
[[nodiscard]] inline bool isOutOfMemory(int code) {
    if (code != AVERROR(ENOMEM))
        return false;
    constexpr std::size_t nearBound = std::size_t(1) << 30; // the bound is 2 GiB
    void* const memory = av_malloc(nearBound);              // touched by none: costs nothing
    av_free(memory);
    return !memory;
}

} // namespace stillwick::libav
