#include "Media/SoundTrack.h"

#include "Media/SoundDecoder.h"

#include <algorithm>
#include <array>
#include <utility>

namespace stillwick {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr AVRational nanosecond{1, 1'000'000'000};

// Containers round times, to 1 ms many of them, and some let them wander by a few. What is farther
// off is a gap, or was recorded twice.
constexpr std::int64_t toleratedGapsPerSecond = 100; // of 10 ms

// A time stamp that falls back by more than this begins a new count, as where two recordings were
// glued together: what follows is joined to what came before.
constexpr std::int64_t restartSeconds = 1;

libav::Resampler makeResampler(const AVFrame& from, int rate, int channels) {
    AVChannelLayout in{};
    AVChannelLayout out{};
    av_channel_layout_default(&out, channels);
    if (from.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&in, from.ch_layout.nb_channels);
    else if (av_channel_layout_copy(&in, &from.ch_layout) < 0)
        throw std::bad_alloc();
    SwrContext* raw = nullptr;
    const int code = swr_alloc_set_opts2(&raw, &out, AV_SAMPLE_FMT_FLT, rate, &in,
                                         AVSampleFormat(from.format), from.sample_rate, 0, nullptr);
    av_channel_layout_uninit(&in);
    libav::Resampler resampler(raw);
    if (code < 0)
        return nullptr;
    av_opt_set_double(raw, "rematrix_maxval", 1.0, 0); // what is mixed down stays within full scale
    // One channel is heard from both sides as loud as it is; libav* would halve its power.
    constexpr std::array both{1.0, 1.0};
    if (from.ch_layout.nb_channels == 1 && channels == 2)
        swr_set_matrix(raw, both.data(), 1);
    return swr_init(raw) < 0 ? nullptr : std::move(resampler);
}

} // namespace

std::unique_ptr<SoundTrack> SoundTrack::open(const QString& path, int sampleRate, int channels,
                                             nanoseconds zero, std::stop_token stop) {
    std::unique_ptr<SoundDecoder> decoder = SoundDecoder::open(path, std::move(stop));
    if (!decoder)
        return nullptr;
    std::unique_ptr<SoundTrack> track(
        new SoundTrack(std::move(decoder), sampleRate, channels, zero));
    return track->learnGrid() ? std::move(track) : nullptr;
}

SoundTrack::SoundTrack(std::unique_ptr<SoundDecoder> decoder, int sampleRate, int channels,
                       nanoseconds zero)
    : m_decoder(std::move(decoder)), m_sampleRate(sampleRate), m_channels(channels), m_zero(zero) {}

SoundTrack::~SoundTrack() = default;

/// The first frame may be shorter by what the encoder put before it: those after it count. False
/// where there is none.
bool SoundTrack::learnGrid() {
    const libav::Frame first = m_decoder->next();
    const libav::Frame second = first ? m_decoder->next() : nullptr;
    const std::optional<std::int64_t> start = first ? timeOf(*first) : std::nullopt;
    if (second && start) {
        m_gridStart = *start + first->nb_samples;
        m_gridSize = second->nb_samples;
    }
    seek(0ns);
    return first != nullptr;
}

void SoundTrack::seek(nanoseconds filmTime) {
    m_position = av_rescale_q(filmTime.count(), nanosecond, {1, m_sampleRate});
    m_stretches.clear();
    m_resampler.reset();
    m_isAtEnd = false;
    m_decoder->seekBefore(filmTime + m_zero);
}

void SoundTrack::read(float* samples, int frames) {
    while (frames > 0) {
        const int taken = take(samples, frames);
        samples += std::ptrdiff_t(taken) * m_channels;
        frames -= taken;
        m_position += taken;
    }
}

/// Gives what comes next, all sound or all silence: at least one sample, at most `frames`.
int SoundTrack::take(float* samples, int frames) {
    dropUntilPosition();
    while (m_stretches.empty() && !m_isAtEnd) {
        decodeMore();
        dropUntilPosition();
    }
    std::int64_t count = frames;
    if (m_stretches.empty() || m_stretches.front().start > m_position) {
        if (!m_stretches.empty())
            count = std::min(count, m_stretches.front().start - m_position);
        std::fill_n(samples, count * m_channels, 0.0F);
        return int(count);
    }
    const Stretch& stretch = m_stretches.front();
    const std::int64_t passed = (m_position - stretch.start) * m_channels;
    count = std::min(count, (std::int64_t(stretch.samples.size()) - passed) / m_channels);
    std::copy_n(stretch.samples.begin() + passed, count * m_channels, samples);
    return int(count);
}

void SoundTrack::dropUntilPosition() {
    const auto endOf = [this](const Stretch& stretch) {
        return stretch.start + std::int64_t(stretch.samples.size()) / m_channels;
    };
    while (!m_stretches.empty() && endOf(m_stretches.front()) <= m_position)
        m_stretches.pop_front();
}

void SoundTrack::decodeMore() {
    if (const libav::Frame frame = m_decoder->next()) {
        place(*frame);
        return;
    }
    endRun();
    m_isAtEnd = true;
}

/// The frame's time in the container, in samples of its own rate.
std::optional<std::int64_t> SoundTrack::timeOf(const AVFrame& frame) const {
    if (frame.pts == AV_NOPTS_VALUE)
        return std::nullopt;
    return av_rescale_q(frame.pts, m_decoder->timeBase(), {1, frame.sample_rate});
}

/// The place at which a frame truly begins whose rounded time is `start`.
std::int64_t SoundTrack::onGrid(std::int64_t start, int rate) const {
    const AVRational unit = m_decoder->timeBase();
    const bool isExact = unit.den % (std::int64_t(unit.num) * rate) == 0;
    if (m_gridSize <= 0 || isExact)
        return start;
    const std::int64_t index =
        av_rescale_rnd(start - m_gridStart, 1, m_gridSize, AV_ROUND_NEAR_INF);
    const std::int64_t grid = m_gridStart + index * m_gridSize;
    const std::int64_t step = std::max<std::int64_t>(av_rescale(unit.num, rate, unit.den), 2);
    return std::abs(grid - start) <= step ? grid : start;
}

void SoundTrack::place(const AVFrame& frame) {
    const Form form{frame.sample_rate, frame.format, frame.ch_layout.u.mask,
                    frame.ch_layout.nb_channels};
    const std::optional<std::int64_t> time = timeOf(frame);
    const std::int64_t zero = av_rescale(m_zero.count(), frame.sample_rate, nanosecond.den);
    const std::int64_t off = time.value_or(m_decoded) - m_decoded;
    const bool isRestart = off < -restartSeconds * frame.sample_rate;
    const bool goesOn = isRestart || std::abs(off) * toleratedGapsPerSecond <= frame.sample_rate;
    if (!m_resampler)
        beginRun(frame, onGrid(time.value_or(zero), frame.sample_rate));
    else if (form != m_form)
        beginRun(frame, av_rescale(m_decoded, frame.sample_rate, m_form.rate));
    else if (!goesOn)
        beginRun(frame, onGrid(*time, frame.sample_rate));
    m_form = form;
    m_decoded += frame.nb_samples;
    convert(&frame);
}

void SoundTrack::beginRun(const AVFrame& frame, std::int64_t start) {
    endRun();
    m_resampler = makeResampler(frame, m_sampleRate, m_channels);
    m_decoded = start;
    const std::int64_t time = av_rescale(start, nanosecond.den, frame.sample_rate);
    m_given = av_rescale(time - m_zero.count(), m_sampleRate, nanosecond.den);
}

void SoundTrack::endRun() {
    if (m_resampler)
        convert(nullptr); // what the resampler still holds
    m_resampler.reset();
}

void SoundTrack::convert(const AVFrame* frame) {
    if (!m_resampler)
        return;
    const int count = frame ? frame->nb_samples : 0;
    const int room = swr_get_out_samples(m_resampler.get(), count);
    Stretch stretch;
    stretch.start = m_given;
    stretch.samples.resize(std::size_t(std::max(room, 0)) * std::size_t(m_channels));
    auto* out = reinterpret_cast<std::uint8_t*>(stretch.samples.data());
    auto** in = frame ? const_cast<const std::uint8_t**>(frame->extended_data) : nullptr;
    const int converted = swr_convert(m_resampler.get(), &out, room, in, count);
    stretch.samples.resize(std::size_t(std::max(converted, 0)) * std::size_t(m_channels));
    if (stretch.samples.empty())
        return;
    m_given += converted;
    m_stretches.push_back(std::move(stretch));
}

} // namespace stillwick
