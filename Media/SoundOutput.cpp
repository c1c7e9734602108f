#include "Media/SoundOutput.h"

#include "Media/SoundWindow.h"

#include <QAudioDevice>
#include <QCoreApplication>
#include <QIODevice>
#include <QMediaDevices>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace stillwick {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using SteadyClock = std::chrono::steady_clock;

// Sound on its way to the device: what a thread may be kept waiting before it is heard.
constexpr auto deviceBuffer = 100ms;
constexpr auto checkInterval = 10ms;
constexpr nanoseconds reportInterval = 50ms;

// Qt counts on a little before the device truly plays; measured, the second advance is right to
// 2 ms, the first to 10 ms.
constexpr int advancesUntilPlaying = 2;

// A device that tells no progress for so long is given up. The clock has gone on by itself.
constexpr nanoseconds stallTime = 2s;

// What the clock makes up for smoothly. Sound that is found farther off several times in a row is
// itself moved to where the clock stands: pictures go on evenly.
constexpr nanoseconds largestCorrection = 40ms;
constexpr int missesUntilAligned = 3;

QAudioFormat qtFormat(SoundFormat format, QAudioFormat::SampleFormat sampleFormat) {
    QAudioFormat result;
    result.setSampleRate(format.sampleRate);
    result.setChannelConfig(QAudioFormat::defaultChannelConfigForChannelCount(format.channels));
    result.setSampleFormat(sampleFormat);
    return result;
}

} // namespace

/// The end of the pipe from which the sink takes sound; it never runs dry.
class SoundOutput::Source final : public QIODevice {
public:
    Source(SoundOutput& output, bool isFloat) : m_output(output), m_isFloat(isFloat) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] qint64 bytesAvailable() const override {
        return std::numeric_limits<int>::max(); // else the sink takes it for ended
    }

protected:
    qint64 readData(char* data, qint64 size) override {
        const auto sampleSize = qint64(m_isFloat ? sizeof(float) : sizeof(std::int16_t));
        const int channels = m_output.m_format.channels;
        const auto frames = int(size / (sampleSize * channels));
        const qint64 samples = qint64(frames) * channels;
        m_samples.resize(std::size_t(samples));
        m_output.provide(m_samples.data(), frames);
        if (m_isFloat)
            std::memcpy(data, m_samples.data(), std::size_t(samples * sampleSize));
        else
            toSixteenBits(data);
        return samples * sampleSize;
    }
    qint64 writeData(const char* /*data*/, qint64 /*size*/) override { return -1; }

private:
    void toSixteenBits(char* data) const {
        for (const float sample : m_samples) {
            constexpr float fullScale = 32767;
            const auto rounded =
                std::int16_t(std::lround(std::clamp(sample, -1.0F, 1.0F) * fullScale));
            std::memcpy(data, &rounded, sizeof rounded);
            data += sizeof rounded;
        }
    }

    SoundOutput& m_output;
    bool m_isFloat;
    std::vector<float> m_samples;
};

std::optional<SoundFormat> SoundOutput::deviceFormat() {
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull())
        return std::nullopt;
    const QAudioFormat preferred = device.preferredFormat();
    const int channels = preferred.channelCount();
    // For these counts Qt and libav* mean the same order of channels.
    const bool isCommon = channels == 1 || channels == 2 || channels == 6 || channels == 8;
    return SoundFormat{std::max(preferred.sampleRate(), 8000), isCommon ? channels : 2};
}

void SoundOutput::begin(QObject& home, std::shared_ptr<SoundSession> session,
                        std::shared_ptr<SoundWindow> window, SoundFormat format,
                        std::int64_t start) {
    if (session->isOver())
        return;
    auto* output = new SoundOutput(home, std::move(session), std::move(window), format, start);
    if (!output->open()) {
        output->m_session->setOutput(SoundSession::Output::Lost);
        output->close();
    }
}

SoundOutput::SoundOutput(QObject& home, std::shared_ptr<SoundSession> session,
                         std::shared_ptr<SoundWindow> window, SoundFormat format,
                         std::int64_t start)
    : QObject(&home), m_session(std::move(session)), m_window(std::move(window)), m_format(format),
      m_start(start), m_gain(m_session->control().gain) {}

SoundOutput::~SoundOutput() {
    // A sink lets events through while it is destroyed: none of them may lead here again.
    m_timer.stop();
    QCoreApplication::removePostedEvents(this);
    m_sink.reset();
}

bool SoundOutput::open() {
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull())
        return false;
    QAudioFormat format = qtFormat(m_format, QAudioFormat::Float);
    const bool isFloat = device.isFormatSupported(format);
    if (!isFloat)
        format.setSampleFormat(QAudioFormat::Int16);
    m_source = std::make_unique<Source>(*this, isFloat);
    m_sink = std::make_unique<QAudioSink>(device, format);
    m_sink->setBufferSize(format.bytesForDuration(std::chrono::microseconds(deviceBuffer).count()));
    m_lastAdvance = SteadyClock::now();
    m_sink->start(m_source.get());
    if (m_session->isWaiting()) // still, for that may have taken long; nothing was given yet
        m_alignment = Alignment{0, m_start};
    connect(&m_timer, &QTimer::timeout, this, &SoundOutput::check);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.start(checkInterval);
    return m_sink->state() != QAudio::StoppedState;
}

void SoundOutput::close() {
    m_timer.stop();
    if (m_sink)
        m_sink->stop();
    deleteLater();
}

void SoundOutput::check() {
    if (m_session->isOver()) {
        close();
        return;
    }
    const SteadyTime now = SteadyClock::now();
    const nanoseconds played = std::chrono::microseconds(m_sink->processedUSecs());
    const bool isStopped = m_sink->state() == QAudio::StoppedState;
    if (isStopped || (played <= m_played && now - m_lastAdvance > stallTime)) {
        m_session->setOutput(SoundSession::Output::Lost);
        close();
        return;
    }
    if (played <= m_played)
        return;
    m_played = played;
    m_lastAdvance = now;
    if (++m_advances >= advancesUntilPlaying)
        compare(now);
}

/// Brings clock and sound together, now that the device has told where it is.
void SoundOutput::compare(SteadyTime now) {
    if (m_session->isWaiting()) {
        m_session->deviceIsAt(heard(), now);
        m_lastReport = now;
        return;
    }
    if (!m_alignment) {
        align(now);
        return;
    }
    const bool hearsAlignment = m_played >= m_format.timeOf(m_alignment->given);
    if (!hearsAlignment || now - m_lastReport < reportInterval)
        return;
    m_lastReport = now;
    const nanoseconds film = heard();
    const nanoseconds error = film - m_session->filmTime(now);
    if (-largestCorrection <= error && error <= largestCorrection) {
        m_misses = 0;
        m_session->deviceIsAt(film, now);
    } else if (++m_misses >= missesUntilAligned) {
        align(now);
    }
}

/// Lets sound go on from where the clock will be when what is given next is heard.
void SoundOutput::align(SteadyTime now) {
    const nanoseconds delay = m_format.timeOf(m_given) - m_played;
    m_alignment = Alignment{m_given, m_format.framesIn(m_session->filmTime(now) + delay)};
    m_misses = 0;
}

/// The film time of what the device plays.
nanoseconds SoundOutput::heard() const {
    return m_format.timeOf(m_alignment->film - m_alignment->given) + m_played;
}

void SoundOutput::provide(float* samples, int frames) {
    if (m_alignment && !m_session->isOver()) {
        m_window->take(m_alignment->film + m_given - m_alignment->given, samples, frames);
        applyGain(samples, frames);
    } else {
        m_window->moveTo(m_format.framesIn(m_session->filmTime(SteadyClock::now())));
        std::fill_n(samples, std::size_t(frames) * std::size_t(m_format.channels), 0.0F);
    }
    m_given += frames;
    m_session->control().wake();
}

/// Turns from the last gain to the one wanted within these samples: a step would click.
void SoundOutput::applyGain(float* samples, int frames) {
    const float target = m_session->control().gain;
    const float step = (target - m_gain) / float(std::max(frames, 1));
    for (int frame = 0; frame < frames; ++frame) {
        m_gain = frame + 1 == frames ? target : m_gain + step;
        for (int channel = 0; channel < m_format.channels; ++channel)
            *samples++ *= m_gain;
    }
}

} // namespace stillwick
