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

#include <memory>
#include <new>

namespace stillwick::libav {

struct Deleter {
    void operator()(AVFormatContext* context) const noexcept { avformat_close_input(&context); }
    void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
    void operator()(AVDictionary* dictionary) const noexcept { av_dict_free(&dictionary); }
    void operator()(SwsContext* context) const noexcept { sws_freeContext(context); }
    void operator()(SwrContext* context) const noexcept { swr_free(&context); }
};

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

} // namespace stillwick::libav
