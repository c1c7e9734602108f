#include "OurSession.h"

#include "../EventLoop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <stdexcept>

namespace stillwick::benchmarks {

namespace {

constexpr int patience = 60'000; // milliseconds

} // namespace

OurSession::OurSession(const QString& film)
    : m_asset(std::make_shared<MediaAsset>(film)),
      m_item(std::make_shared<MediaPlayerItem>(m_asset)) {
    m_player.replaceCurrentItem(m_item);
    QElapsedTimer timer;
    timer.start();
    while (m_player.picture().isNull() && timer.elapsed() < patience)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    if (m_player.picture().isNull())
        throw std::runtime_error("our player shows no picture");
}

void OurSession::settle() {
    QEventLoop loop;
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    QObject::connect(&m_player, &MediaPlayer::pictureChanged, &loop, [&] {
        // The player notes that it has settled before it tells of the picture.
        if (!m_player.isSeeking())
            loop.quit();
    });
    if (m_player.isSeeking())
        loop.exec();
    if (m_player.isSeeking())
        throw std::runtime_error("our player shows no picture");
}

double OurSession::seek(double seconds) {
    QElapsedTimer timer;
    timer.start();
    m_player.seek(CMTime::fromSeconds(seconds, 1'000'000), CMTime::zero(), CMTime::zero());
    noteCall(double(timer.nsecsElapsed()) / 1e6);
    settle();
    return double(timer.nsecsElapsed()) / 1e6;
}

double OurSession::step(int count) {
    QElapsedTimer timer;
    timer.start();
    m_item->step(count);
    noteCall(double(timer.nsecsElapsed()) / 1e6);
    settle();
    return double(timer.nsecsElapsed()) / 1e6;
}

void OurSession::noteCall(double milliseconds) {
    m_longestCall = std::max(m_longestCall, milliseconds);
}

void OurSession::rest(int milliseconds) {
    benchmarks::rest(milliseconds);
}

} // namespace stillwick::benchmarks
