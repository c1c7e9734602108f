#include "Media/FrameSource.h"

#include "Media/MediaError.h"
#include "Media/PacketTable.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace stillwick {

namespace {

using Category = MediaError::Category;

/// Thrown inside this unit where a frame in mid-film has no time, until the table gives them
/// theirs.
struct TimesMissing {};

// A damaged stretch looks alike from every key packet: after this many the best is taken.
constexpr int maximumDoubts = 3;
// A film none of whose first pictures has a time has none at all.
constexpr int maximumTimelessPictures = 300;
// Beginning again costs the decoder's delay: a key packet nearer than this is decoded through.
constexpr std::size_t worthJumping = 12;
// The frames next to the one wanted are decoded in any case: field pairs count as two here.
constexpr int leastTrail = 4;
// As the tick on the way to which pictures may be left out: none may.
constexpr std::int64_t everyPicture = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t farthestTick = Timeline::farthestTick;

/// Decoders for which leaving out unreferenced pictures changes nothing in the others.
bool mayLeaveOutPictures(const AVCodecParameters& parameters) {
    const bool isKnown =
        parameters.codec_id == AV_CODEC_ID_H264 || parameters.codec_id == AV_CODEC_ID_HEVC;
    const bool isProgressive = parameters.field_order == AV_FIELD_PROGRESSIVE ||
                               parameters.field_order == AV_FIELD_UNKNOWN;
    return isKnown && isProgressive;
}

/// H.264 4:4:4 streams of one widespread encoder say in their first packet alone how they were
/// made.
bool needsFirstPacket(const AVCodecParameters& parameters) {
    return parameters.codec_id == AV_CODEC_ID_H264 &&
           (parameters.profile == FF_PROFILE_H264_HIGH_444_PREDICTIVE ||
            parameters.profile == FF_PROFILE_H264_CAVLC_444);
}

} // namespace

FrameSource::FrameSource(const QString& path, const std::stop_token& stop)
    : m_reader(path, stop), m_queue(m_reader), m_decoder(m_reader.stream()),
      m_mayLeaveOut(mayLeaveOutPictures(*m_reader.stream().codecpar)) {
    try {
        if (PacketTable::isNeededFor(m_reader))
            adoptTable();
        else if (!m_reader.hasOwnTimeline() || needsFirstPacket(*m_reader.stream().codecpar))
            findFirstPicture();
    } catch (const TimesMissing&) {
        adoptTable();
    }
}

void FrameSource::adoptTable() {
    m_run = {};
    ++m_timelineRevision;
    m_reader.setTable(PacketTable::make(m_reader.path(), m_reader.stopToken()));
    findFirstPicture();
}

void FrameSource::findFirstPicture() {
    begin(m_queue.beginAtStart());
    m_run.next = decodeNext(everyPicture);
    if (!m_run.next)
        throw MediaError::make(Category::NoPicture);
    if (!m_reader.hasOwnTimeline())
        m_zero = m_run.next->presentationTime();
}

Timeline FrameSource::timeline() const noexcept {
    return {m_reader.stream().time_base, m_zero};
}

void FrameSource::setPairHandler(PairHandler handler, int trail) {
    m_pairHandler = std::move(handler);
    m_trail = trail;
}

FrameSource::Target FrameSource::targetAt(std::int64_t tick) {
    return {tick, tick, tick + 1, tick};
}

FrameSource::Target FrameSource::targetFor(const CMTime& time, const Tolerance& tolerance) const {
    if (!time.isNumeric() || time.timescale <= 0 || time.value < 0)
        throw MediaError::make(Category::TimeOutOfRange);
    const Timeline line = timeline();
    const std::int64_t ticks = line.toTicks(time, AV_ROUND_DOWN);
    if (ticks < 0 || ticks >= farthestTick)
        throw MediaError::make(Category::TimeOutOfRange);
    Target target = targetAt(m_zero + ticks);
    target.endTick = line.tickAtOrAfter(time);
    if (tolerance.before == CMTime::positiveInfinity())
        target.soonEnough = std::numeric_limits<std::int64_t>::min();
    else if (tolerance.before > CMTime::zero() && tolerance.before.timescale > 0)
        target.soonEnough = target.endTick - line.toTicks(tolerance.before, AV_ROUND_DOWN);
    if (tolerance.after.isNumeric() && tolerance.after.timescale > 0)
        target.lateEnough += line.toTicks(tolerance.after, AV_ROUND_DOWN);
    return target;
}

CMTime FrameSource::filmTime(const VideoFrame& frame) const {
    return timeline().timeOf(frame.presentationTime());
}

template <typename Work, typename Again>
auto FrameSource::answer(const std::stop_token& stop, const Work& work, const Again& again) {
    m_reader.setStopToken(stop);
    m_reader.throwIfStopped();
    try {
        try {
            return work();
        } catch (const TimesMissing&) {
            adoptTable();
            return again();
        }
    } catch (...) {
        m_run.isUsable = false;
        throw;
    }
}

SharedFrame FrameSource::frameAt(const CMTime& time, const Tolerance& tolerance,
                                 const std::stop_token& stop) {
    const auto work = [&] {
        return locateInside(targetFor(time, tolerance));
    };
    return answer(stop, work, work);
}

SharedFrame FrameSource::locateInside(const Target& target) {
    SharedFrame frame = locate(target);
    throwIfPastEnd(target);
    return frame;
}

bool FrameSource::isNearEnough(const Target& target) const {
    if (!m_run.isUsable || m_run.isDoubtful || !m_run.shown)
        return false;
    const std::int64_t time = m_run.shown->presentationTime();
    return time > target.tick && time <= target.lateEnough;
}

SharedFrame FrameSource::locate(const Target& target) {
    if (isNearEnough(target))
        return m_run.shown;
    if (prepareToContinue(target) && advanceTo(target) == Outcome::Found && !m_run.isDoubtful)
        return m_run.shown;
    return locateFromKey(target);
}

SharedFrame FrameSource::locateFromKey(const Target& target) {
    begin(m_queue.beginBefore(target.tick));
    for (int attempt = 1;; ++attempt) {
        const Outcome outcome = advanceTo(target);
        const bool isFromStart = m_run.entry.isStart;
        // From the start too a second try may do better: some decoders learn only while they decode
        // how far a stream reorders its pictures.
        const bool isLastWord = attempt >= maximumDoubts || (isFromStart && attempt > 1);
        if (outcome == Outcome::Found && (!m_run.isDoubtful || isLastWord))
            return m_run.shown;
        if (isFromStart && attempt > 1)
            throw MediaError::make(Category::NoPicture);
        begin(isFromStart ? m_queue.beginAtStart()
                          : m_queue.beginBefore(target.tick, keysBefore(target, attempt)));
    }
}

std::int64_t FrameSource::keysBefore(const Target& target, int attempt) const {
    const std::int64_t last = m_run.entry.keyDecodeTime;
    if (attempt < maximumDoubts)
        return last;
    const std::int64_t way = std::max(av_sat_sub64(target.tick, last), m_reader.ticksPerSecond());
    return std::max(av_sat_sub64(last, way), everyPicture + 1);
}

void FrameSource::begin(const PacketQueue::Entry& entry) {
    m_decoder.flush();
    m_run = {};
    m_run.entry = entry;
    m_run.isUsable = true;
}

bool FrameSource::prepareToContinue(const Target& target) {
    if (!m_run.isUsable || m_run.isDoubtful)
        return false;
    const bool isBehind =
        m_run.shown ? target.tick < m_run.shown->presentationTime() : !m_run.entry.isStart;
    if (isBehind || !m_queue.isNear(target.tick))
        return false;
    const bool isDecoded = m_run.next && m_run.next->presentationTime() > target.tick;
    if (isDecoded || m_run.hasSentEnd)
        return true;
    m_queue.readAheadTo(target.tick);
    const auto key = m_queue.lastKeyBefore(target.tick);
    if (key && (*key > worthJumping || m_queue.isSeam(*key)))
        begin(m_queue.beginAt(*key));
    return true;
}

SharedFrame FrameSource::frameAfter(Damage damage, const std::stop_token& stop) {
    Q_ASSERT(m_run.isUsable && m_run.shown);
    const CMTime here = filmTime(*m_run.shown);
    return answer(
        stop, [&] { return following(damage); }, [&] { return locate(targetFor(here, {})); });
}

SharedFrame FrameSource::following(Damage damage) {
    const std::int64_t last = m_run.shown->presentationTime();
    const bool wasDoubtful = m_run.isDoubtful;
    bool mayRetry = damage == Damage::Retry && !wasDoubtful;
    while (m_run.next || decodeAhead(everyPicture)) {
        const std::int64_t time = m_run.next->presentationTime();
        if (time > last) {
            m_queue.readAheadTo(time);
            if (const auto seam = m_queue.seamWithin(last, time))
                return locateFromKey(targetAt(*seam));
            if (!mayRetry || (!m_run.isDoubtful && !isPictureMissingAfter(last)))
                break;
            mayRetry = false;
            if (SharedFrame frame = retryAfter(last))
                return frame;
            m_run.isDoubtful = true; // once is enough for one damaged stretch
            continue;
        }
        showNext();
    }
    if (!m_run.next)
        return nullptr;
    showNext();
    if (m_run.shown->avFrame().key_frame != 0 && m_run.shown->isIntact())
        m_run.isDoubtful = false; // nothing after it leans on what came before
    return m_run.shown;
}

SharedFrame FrameSource::retryAfter(std::int64_t last) {
    const std::int64_t first =
        m_queue.frameTimeAfter(last).value_or(m_run.next->presentationTime());
    SharedFrame frame = locateFromKey(targetAt(first));
    return frame->presentationTime() > last ? frame : nullptr;
}

bool FrameSource::isPictureMissingAfter(std::int64_t last) const {
    // The two fields of a picture may come in packets with times of their own.
    if (m_run.next->avFrame().interlaced_frame != 0)
        return false;
    const auto before = m_queue.frameTimeBefore(m_run.next->presentationTime() - 1);
    return before && *before > last;
}

CMTime FrameSource::endTime(const std::stop_token& stop) {
    const auto work = [&] {
        return timeline().timeOf(locateEnd());
    };
    return answer(stop, work, work);
}

std::int64_t FrameSource::locateEnd() {
    (void)locateFromKey(targetAt(std::max(m_zero, estimatedEndTick())));
    (void)advanceTo(targetAt(farthestTick));
    return endOfLastFrame();
}

std::int64_t FrameSource::estimatedEndTick() const {
    if (m_reader.table())
        return farthestTick;
    const AVStream& stream = m_reader.stream();
    if (stream.duration > 0 && stream.start_time != AV_NOPTS_VALUE)
        return stream.start_time + stream.duration;
    const AVFormatContext& format = m_reader.format();
    if (format.duration <= 0)
        return m_zero;
    const std::int64_t start = format.start_time != AV_NOPTS_VALUE ? format.start_time : 0;
    return av_rescale_q(start + format.duration, {1, AV_TIME_BASE}, stream.time_base);
}

FrameSource::Outcome FrameSource::advanceTo(const Target& target) {
    m_queue.readAheadTo(target.tick);
    for (;;) {
        if (m_run.next) {
            if (m_run.next->presentationTime() > target.tick)
                break;
            showNext();
        }
        if (m_run.shown && isSettled(target))
            return Outcome::Found;
        // A frame that is good enough may be the first met: what follows it must be complete.
        if (!decodeAhead(std::min(target.tick, target.soonEnough)))
            break;
    }
    if (!m_run.shown) {
        // Before the first picture, that picture is shown.
        if (!m_run.entry.isStart || !m_run.next)
            return Outcome::MustBeginEarlier;
        m_run.shown = m_run.next;
    }
    const auto expected = m_queue.frameTimeBefore(target.tick);
    if (expected && *expected > m_run.shown->presentationTime())
        m_run.isDoubtful = true;
    return Outcome::Found;
}

void FrameSource::showNext() {
    if (m_run.shown)
        m_run.spacing = m_run.next->presentationTime() - m_run.shown->presentationTime();
    m_run.shown = std::exchange(m_run.next, nullptr);
    m_queue.forgetBefore(m_run.shown->presentationTime());
}

bool FrameSource::decodeAhead(std::int64_t tick) {
    m_run.next = decodeNext(tick);
    if (!m_run.next)
        return false;
    if (m_pairHandler && isPair())
        m_pairHandler(m_run.shown, m_run.next);
    return true;
}

/// Whether nothing lies between the frame shown and the next, as far as can be known.
bool FrameSource::isPair() {
    if (!m_run.shown || m_run.isDoubtful)
        return false;
    const std::int64_t shown = m_run.shown->presentationTime();
    const std::int64_t next = m_run.next->presentationTime();
    if (shown < m_run.completeFrom || next <= shown)
        return false;
    // Some decoders learn only while they decode how far a stream reorders its pictures, and let
    // one fall on the way.
    m_queue.readAheadTo(next);
    return !isPictureMissingAfter(shown);
}

bool FrameSource::isSettled(const Target& target) const {
    const std::int64_t time = m_run.shown->presentationTime();
    return time >= target.soonEnough || m_queue.frameTimeBefore(target.tick) == time;
}

SharedFrame FrameSource::decodeNext(std::int64_t tick) {
    for (int timeless = 0;;) {
        m_reader.throwIfStopped();
        SharedFrame frame = m_decoder.receive();
        if (!frame) {
            m_run.isDrained = m_run.hasSentEnd;
            if (m_run.isDrained && timeless > 0 && !m_hasTimes && !m_reader.table())
                throw TimesMissing{};
            if (m_run.isDrained)
                return nullptr;
            sendNext(tick);
        } else if (frame->presentationTime() == AV_NOPTS_VALUE) {
            // Pictures before the first that has a time are not on the timeline.
            const bool hasNone = !m_hasTimes && ++timeless > maximumTimelessPictures;
            if (!m_reader.table() && (m_run.hasTimes || hasNone))
                throw TimesMissing{};
        } else {
            m_hasTimes = true;
            m_run.hasTimes = true;
            if (isAcceptable(*frame))
                return frame;
        }
    }
}

bool FrameSource::isAcceptable(const VideoFrame& frame) {
    const std::int64_t time = frame.presentationTime();
    // Pictures shown before the key packet that they follow may lean on what came before it.
    if (!m_run.entry.isStart && time < m_run.entry.keyTime)
        return false;
    const SharedFrame& last = m_run.next ? m_run.next : m_run.shown;
    if (last && time < last->presentationTime())
        return false;
    const bool isKey = time == m_run.entry.keyTime;
    const AVPictureType type = frame.avFrame().pict_type;
    if (!frame.isIntact() || (isKey && (type == AV_PICTURE_TYPE_P || type == AV_PICTURE_TYPE_B)))
        m_run.isDoubtful = true;
    return true;
}

void FrameSource::sendNext(std::int64_t tick) {
    const libav::Packet packet = m_queue.pop();
    m_run.hasSentEnd = !packet;
    m_packetsDecoded += packet ? 1 : 0;
    const auto threshold =
        m_mayLeaveOut ? m_queue.frameTimeBefore(tick, std::max(m_trail, leastTrail)) : std::nullopt;
    const bool isOnTheWay =
        packet && packet->pts != AV_NOPTS_VALUE && threshold && packet->pts < *threshold;
    if (isOnTheWay)
        m_run.completeFrom = std::max(m_run.completeFrom, packet->pts + 1);
    m_decoder.send(packet.get(), isOnTheWay ? VideoDecoder::Effort::ReferencesOnly
                                            : VideoDecoder::Effort::EveryPicture);
}

void FrameSource::throwIfPastEnd(const Target& target) const {
    const bool isLast =
        (m_run.isDrained && !m_run.next) || m_queue.isLastFrame(m_run.shown->presentationTime());
    if (isLast && target.endTick > endOfLastFrame())
        throw MediaError::make(Category::TimeOutOfRange);
}

std::int64_t FrameSource::endOfLastFrame() const {
    const AVStream& stream = m_reader.stream();
    const AVRational rate = stream.avg_frame_rate;
    const std::int64_t average =
        rate.num > 0 && rate.den > 0 ? av_rescale_q(1, av_inv_q(rate), stream.time_base) : 0;
    std::int64_t duration = m_run.shown->duration();
    // One field of two counts half of the frame's time.
    if (duration <= 0 || (m_run.shown->avFrame().interlaced_frame && m_run.spacing > duration))
        duration = m_run.spacing > 0 ? m_run.spacing : average;
    // Where the container does not tell times, what it calls a duration may be a field's.
    if (m_reader.table() && m_reader.table()->lastDuration() > 0)
        duration = m_reader.table()->lastDuration();
    const std::int64_t end = m_run.shown->presentationTime() + std::max<std::int64_t>(duration, 1);
    if (!m_reader.hasOwnTimeline() || stream.duration <= 0 || stream.start_time == AV_NOPTS_VALUE)
        return end;
    // Where frames are reordered, the track may last longer than its last frame says; a container
    // that claims far more than its frames is not believed.
    const std::int64_t declared = stream.start_time + stream.duration;
    const std::int64_t believable =
        end + std::max(4 * average, av_rescale_q(1, {1, 1}, stream.time_base));
    return declared > end && declared <= believable ? declared : end;
}

} // namespace stillwick
