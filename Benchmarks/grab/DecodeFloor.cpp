#include "GrabMethod.h"

#include "Media/VideoDecoder.h"

#include <algorithm>
#include <stdexcept>

namespace stillwick::benchmarks {

namespace {

class DecodeFloor final : public GrabMethod {
public:
    explicit DecodeFloor(const Clip& clip)
        : m_clip(clip), m_decoder(openDecoder(clip.stream(), decoderThreadCount())),
          m_frame(libav::makeFrame()) {}

    void grab(const Moment& moment) override {
        const auto& packets = m_clip.packets();
        const std::int64_t time = m_clip.pictures()[moment.frame].time;
        const auto target =
            std::find_if(packets.begin(), packets.end(),
                         [time](const libav::Packet& packet) { return packet->pts == time; });
        auto next = target;
        while (next != packets.begin() &&
               ((*next)->pts > time || ((*next)->flags & AV_PKT_FLAG_KEY) == 0))
            --next;
        avcodec_flush_buffers(m_decoder.get());
        for (; next <= target; ++next) {
            // On the way, what no other picture refers to need not be decoded.
            m_decoder->skip_frame = (*next)->pts < time ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
            avcodec_send_packet(m_decoder.get(), next->get());
            if (hasCome(time))
                return;
        }
        // Asking for what it holds back gives the frame sooner than more packets would.
        avcodec_send_packet(m_decoder.get(), nullptr);
        if (!hasCome(time))
            throw std::runtime_error("the decoder alone does not reach the frame");
    }

    std::optional<PictureHash> lastPicture() override { return hashOf(*m_frame); }

private:
    /// Takes the frames that are ready, up to the one at `time`.
    [[nodiscard]] bool hasCome(std::int64_t time) {
        while (avcodec_receive_frame(m_decoder.get(), m_frame.get()) >= 0) {
            if (m_frame->pts == time)
                return true;
        }
        return false;
    }

    const Clip& m_clip;
    libav::CodecContext m_decoder;
    libav::Frame m_frame;
};

} // namespace

std::unique_ptr<GrabMethod> makeDecodeFloor(const Clip& clip) {
    return std::make_unique<DecodeFloor>(clip);
}

} // namespace stillwick::benchmarks
