#include "Media/SoundPlayer.h"

#include "Media/SoundFeeder.h"
#include "Media/SoundSession.h"
#include "Media/SoundThread.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace stillwick {

using std::chrono::nanoseconds;

SoundPlayer::SoundPlayer(QString path, std::shared_ptr<PlaybackClock> clock)
    : m_clock(std::move(clock)), m_control(std::make_shared<SoundControl>()),
      m_feeder(std::make_unique<SoundFeeder>(std::move(path), m_control)) {}

SoundPlayer::~SoundPlayer() {
    stop();
}

void SoundPlayer::play(nanoseconds from, nanoseconds zero) {
    const std::lock_guard lock(m_mutex);
    if (m_session)
        m_session->end();
    m_session = std::make_shared<SoundSession>(m_control, m_clock, from, zero);
    // Two threads watch that the clock does not wait too long: one may be opening the file, the
    // other the device.
    postToSoundThread([session = m_session](QObject& home) {
        QTimer::singleShot(SoundSession::patience, Qt::PreciseTimer, &home,
                           [session] { session->goOnAlone(); });
    });
    m_feeder->serve(m_session);
}

void SoundPlayer::stop() {
    const std::lock_guard lock(m_mutex);
    if (!m_session)
        return;
    m_session->end();
    m_session.reset();
    m_clock->hold(m_clock->at(std::chrono::steady_clock::now()));
}

void SoundPlayer::setVolume(double volume) {
    const std::lock_guard lock(m_mutex);
    m_volume = std::clamp(volume, 0.0, 1.0);
    updateGain();
}

void SoundPlayer::setMuted(bool isMuted) {
    const std::lock_guard lock(m_mutex);
    m_isMuted = isMuted;
    updateGain();
}

void SoundPlayer::updateGain() {
    m_control->gain = m_isMuted ? 0.0F : float(m_volume);
}

} // namespace stillwick
