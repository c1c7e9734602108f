#include "PlayerWalk.h"

#include "EventLoop.h"

#include "Media/ImageGenerator.h"
#include "Media/MediaAsset.h"
#include "Media/MediaPlayer.h"

#include <random>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;

constexpr int maximumFaults = 5;

std::unique_ptr<ImageGenerator> exactGenerator(std::shared_ptr<const MediaAsset> asset) {
    auto generator = std::make_unique<ImageGenerator>(std::move(asset));
    generator->setAppliesPreferredTrackTransform(true);
    generator->setRequestedTimeToleranceBefore(CMTime::zero());
    generator->setRequestedTimeToleranceAfter(CMTime::zero());
    return generator;
}

class Walker {
public:
    Walker(const QString& path, unsigned seed, bool isDamaged, PlayerWalk& walk)
        : m_walk(walk), m_random(seed), m_asset(std::make_shared<MediaAsset>(path)),
          m_item(std::make_shared<MediaPlayerItem>(m_asset)),
          m_generator(exactGenerator(isDamaged ? m_asset : std::make_shared<MediaAsset>(path))),
          m_end(m_asset->loadDuration().result()) {
        QObject::connect(&m_player, &MediaPlayer::failed, &m_player,
                         [this](const QString& why) { fault(why); });
        m_player.replaceCurrentItem(m_item);
    }

    void operate() {
        ++m_walk.operations;
        switch (m_random() % 8) {
        case 0:
        case 1:
            m_player.seek(anyTime(), CMTime::zero(), CMTime::zero());
            break;
        case 2:
        case 3:
            m_item->step(-1 - int(m_random() % 5));
            break;
        case 4:
            m_item->step(1 + int(m_random() % 5));
            break;
        case 5:
            m_player.play();
            runFor(std::chrono::milliseconds(m_random() % 60));
            break;
        case 6:
            runFor(std::chrono::milliseconds(m_random() % 30));
            break;
        default:
            pauseAndCompare();
        }
    }

    void pauseAndCompare() {
        m_player.pause();
        if (!runUntil([this] { return !m_player.isSeeking() && !m_player.picture().isNull(); }))
            return fault(QStringLiteral("the player does not come to rest"));
        ++m_walk.comparisons;
        const CMTime time = m_player.currentTime();
        const ImageGenerator::Result grabbed = m_generator->generateImage(time);
        const QString place = QStringLiteral(" at %1/%2 (operation %3)")
                                  .arg(time.value)
                                  .arg(time.timescale)
                                  .arg(m_walk.operations);
        if (grabbed.error)
            fault(grabbed.error->description() + place);
        else if (grabbed.image != m_player.picture())
            fault(QStringLiteral("another picture is shown than grabbed") + place);
    }

private:
    [[nodiscard]] CMTime anyTime() {
        constexpr int timescale = 600;
        const auto span = std::int64_t(m_end.safeSeconds() * timescale) + 1;
        return CMTime::make(std::int64_t(m_random() % std::uint64_t(span)), timescale);
    }

    void fault(const QString& sentence) {
        if (m_walk.faults.size() < maximumFaults)
            m_walk.faults.append(sentence);
    }

    PlayerWalk& m_walk;
    std::mt19937_64 m_random;
    std::shared_ptr<MediaAsset> m_asset;
    std::shared_ptr<MediaPlayerItem> m_item;
    std::unique_ptr<ImageGenerator> m_generator;
    CMTime m_end;
    MediaPlayer m_player;
};

} // namespace

PlayerWalk walkThrough(const QString& path, int operations, unsigned seed, bool isDamaged) {
    application();
    PlayerWalk walk;
    try {
        Walker walker(path, seed, isDamaged, walk);
        while (walk.operations < operations && walk.faults.size() < maximumFaults)
            walker.operate();
        walker.pauseAndCompare();
    } catch (const MediaError& error) {
        walk.faults.append(error.description());
    }
    return walk;
}

} // namespace stillwick::testing
