#include "Media/ImageGenerator.h"

#include "Media/FrameCache.h"
#include "Media/FrameSource.h"
#include "Media/MediaAsset.h"
#include "Media/PictureConverter.h"

#include <QThreadPool>

#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

namespace stillwick {

namespace {

/// Decoding brings its own threads: two films at once keep a machine busy.
QThreadPool& grabbingPool() {
    static QThreadPool pool;
    static const bool isNamed = [] {
        pool.setObjectName(QStringLiteral("grabbing"));
        pool.setMaxThreadCount(2);
        return true;
    }();
    Q_UNUSED(isNamed)
    return pool;
}

} // namespace

/// What requests share: the decoder and its place in the film.
struct ImageGenerator::Core {
    explicit Core(std::shared_ptr<const MediaAsset> film) : asset(std::move(film)) {}

    /// The frame that a player of the film holds for a time, as it was when it was asked for.
    struct Held {
        SharedFrame frame;
        CMTime time;
    };

    [[nodiscard]] Held heldFrame(const CMTime& time) const {
        const FrameCache& cache = *asset->frameCache();
        SharedFrame frame = cache.frameAt(time);
        const CMTime start = frame ? cache.timeline().timeOf(frame->presentationTime()) : CMTime();
        return {std::move(frame), start};
    }

    [[nodiscard]] Result grab(const CMTime& time, const Settings& settings, const Held& held,
                              const std::stop_token& stop) {
        const auto orientation = settings.appliesPreferredTrackTransform
                                     ? PictureConverter::Orientation::Upright
                                     : PictureConverter::Orientation::AsStored;
        try {
            if (stop.stop_requested())
                throw MediaError::make(MediaError::Category::Cancelled);
            if (held.frame)
                return {PictureConverter().convert(*held.frame, orientation), held.time, {}};
            const Turn turn(*this, stop);
            if (!source)
                source = asset->takeFrameSource(stop);
            const SharedFrame frame =
                source->frameAt(time, {settings.toleranceBefore, settings.toleranceAfter}, stop);
            return {converter.convert(*frame, orientation), source->filmTime(*frame), {}};
        } catch (const MediaError& error) {
            return {{}, {}, error};
        } catch (const std::bad_alloc&) {
            return {{}, {}, MediaError::make(MediaError::Category::OutOfMemory)};
        }
    }

    /// One request at a time; a request withdrawn while it waits for its turn waits no longer.
    class Turn {
    public:
        Turn(Core& core, const std::stop_token& stop) : m_core(core) {
            std::unique_lock lock(core.mutex);
            const bool isFree = core.turnEnded.wait(lock, stop, [&core] { return !core.isTaken; });
            if (!isFree || stop.stop_requested())
                throw MediaError::make(MediaError::Category::Cancelled);
            core.isTaken = true;
        }
        ~Turn() {
            const std::lock_guard lock(m_core.mutex);
            m_core.isTaken = false;
            m_core.turnEnded.notify_all();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        Core& m_core;
    };

    std::shared_ptr<const MediaAsset> asset;
    std::mutex mutex;
    std::condition_variable_any turnEnded;
    bool isTaken = false; // guarded by mutex
    // Of the request whose turn it is:
    std::unique_ptr<FrameSource> source;
    PictureConverter converter;
};

ImageGenerator::ImageGenerator(std::shared_ptr<const MediaAsset> asset)
    : m_core(std::make_shared<Core>(std::move(asset))) {}

ImageGenerator::~ImageGenerator() = default;

void ImageGenerator::setAppliesPreferredTrackTransform(bool applies) {
    m_settings.appliesPreferredTrackTransform = applies;
}

bool ImageGenerator::appliesPreferredTrackTransform() const noexcept {
    return m_settings.appliesPreferredTrackTransform;
}

void ImageGenerator::setRequestedTimeToleranceBefore(const CMTime& tolerance) {
    m_settings.toleranceBefore = tolerance;
}

void ImageGenerator::setRequestedTimeToleranceAfter(const CMTime& tolerance) {
    m_settings.toleranceAfter = tolerance;
}

void ImageGenerator::generateImageAsynchronously(const CMTime& time, CompletionHandler completion,
                                                 std::stop_token stop) const {
    grabbingPool().start([core = m_core, settings = m_settings, time,
                          held = m_core->heldFrame(time), stop = std::move(stop),
                          completion = std::move(completion)] {
        completion(core->grab(time, settings, held, stop));
    });
}

ImageGenerator::Result ImageGenerator::generateImage(const CMTime& time,
                                                     const std::stop_token& stop) const {
    return m_core->grab(time, m_settings, m_core->heldFrame(time), stop);
}

} // namespace stillwick
