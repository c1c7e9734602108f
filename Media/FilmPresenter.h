// Decides which picture of a film is shown, from a thread of its own. Commands and answers belong
// to one other thread, the player's.
#pragma once

#include "Media/CMTime.h"
#include "Media/ConvertedPictures.h"
#include "Media/FrameLoader.h"
#include "Media/PlaybackClock.h"
#include "Media/PresenterCommands.h"
#include "Media/SoundPlayer.h"

#include <QImage>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace stillwick {

/// Carries out seeks, steps and playing on one film, and hands over pictures ready for painting.
class FilmPresenter final {
public:
    /// What is to be on screen.
    struct Presentation {
        enum class Kind {
            Near,    ///< on the way to a place sought: the exact picture follows
            Settled, ///< the end of a seek or of steps
            Playing,
            Ended,  ///< the film has played to its end, or to where it can be read
            Failed, ///< there is no picture: `error` says why
        };
        Kind kind = Kind::Settled;
        std::uint64_t serial = 0; ///< of the last command whose effect this is
        SharedFrame frame;
        QImage picture; ///< as PictureConverter makes it
        CMTime time;    ///< where the player then stands
        bool isJump = false;
        std::optional<MediaError> error;
    };

    /// `wake` is called from the presenter's thread when `take` has something new to give.
    /// `predecessor` is ended on that thread, so that nobody waits for it.
    FilmPresenter(std::shared_ptr<const MediaAsset> asset, std::function<void()> wake,
                  std::unique_ptr<FilmPresenter> predecessor);
    ~FilmPresenter();
    FilmPresenter(const FilmPresenter&) = delete;
    FilmPresenter& operator=(const FilmPresenter&) = delete;

    /// Silences and begins to stop, without waiting.
    void dismiss();

    // Commands are numbered by who gives them, ascending. All return at once.
    /// A newer seek replaces an older one, and the steps asked before it.
    void seek(const CMTime& time, std::uint64_t serial);
    /// Steps asked one after the other are added up.
    void step(int count, std::uint64_t serial);
    void play(std::uint64_t serial);
    /// Ends playing. `shown` is the frame on screen, from which steps then count; null where a seek
    /// or step is still to be answered.
    void rest(SharedFrame shown, std::uint64_t serial);
    void setVolume(double volume, bool isMuted);

    /// The newest presentation since the last call.
    [[nodiscard]] std::optional<Presentation> take();
    /// Pictures whose moment had passed before they could be shown, since playing first began.
    [[nodiscard]] std::int64_t droppedPictures() const;

private:
    using Kind = Presentation::Kind;

    using Command = PresenterCommands::Command;
    enum class Neighbours { Ready, Converted, Awaited };
    void run(const std::stop_token& stop);
    void carryOut(const Command& command, const std::stop_token& stop);
    void carryOutSeek(const CMTime& time, const std::stop_token& replacement,
                      const std::stop_token& stop);
    void carryOutSteps(int count, const std::stop_token& replacement);
    void rest(const SharedFrame& shown);
    void settle(SharedFrame frame, const CMTime& time, FrameLoader::Course course);
    void idle(const std::stop_token& stop);
    [[nodiscard]] Neighbours prepareNeighbour();

    void play(const std::stop_token& stop);
    void startPlaying(const std::stop_token& stop);
    /// Shows the next picture when its time has come; false when playing is over.
    [[nodiscard]] bool playNext(const std::stop_token& stop);
    [[nodiscard]] bool waitForMore(std::int64_t progress, const std::stop_token& stop);
    [[nodiscard]] SharedFrame newestDue(SharedFrame next);
    void catchUp(const std::stop_token& stop);
    [[nodiscard]] bool waitUntilDue(const VideoFrame& frame, const std::stop_token& stop);
    [[nodiscard]] CMTime timeOf(const VideoFrame& frame) const;
    [[nodiscard]] std::chrono::nanoseconds startOf(const VideoFrame& frame) const;
    void present(Kind kind, const SharedFrame& frame, const CMTime& time);
    void presentFailure(const MediaError& error);
    void post(Presentation presentation);

    std::shared_ptr<const MediaAsset> m_asset;
    std::shared_ptr<FrameCache> m_cache;
    std::function<void()> m_wake;
    std::shared_ptr<PlaybackClock> m_clock;
    SoundPlayer m_sound;

    PresenterCommands m_commands;

    mutable std::mutex m_mutex;
    std::optional<Presentation> m_presentation; // guarded by m_mutex, as the following
    std::int64_t m_dropped = 0;

    // Of the thread alone:
    std::unique_ptr<FilmPresenter> m_predecessor;
    std::unique_ptr<FrameLoader> m_loader;
    ConvertedPictures m_pictures;
    std::uint64_t m_serial = 0;
    SharedFrame m_frame; ///< where the film stands
    CMTime m_time = CMTime::zero();
    bool m_isPlaying = false;
    bool m_travelsBackward = false;
    std::jthread m_thread;
};

} // namespace stillwick
